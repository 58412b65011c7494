#include "ntimer_cfg.h"

#include <unordered_map>
#include <utility>
#include <vector>

#include "config_reader.h"
#include "instance_files.h"
#include "text.h"

using namespace platform;

namespace {

struct timer {
    ntimer_cfg_t entry{};
    std::vector<std::pair<std::string, std::string>> keys;  // as they are written
};

using timer_map = std::unordered_map<std::string, timer, hash_ignoring_case, same_ignoring_case>;

timer_map timers;

class timer_reader : public config_reader {
  public:
    using config_reader::config_reader;
    timer_map read_timers;

  private:
    kqcode_t on_section(const schar* name) override {
        kqcode_t code = check_name(name);
        if (code < 0) return code;
        auto place = read_timers.try_emplace(name).first;
        current_ = &place->second;
        copy_text(current_->entry.name, place->first);
        return 0;
    }

    kqcode_t on_key(const schar* key, const schar* value) override {
        if (current_ == nullptr) return refuse(ARCH_E_NO_SECTION, "a key before the first section");
        current_->keys.emplace_back(key, value);
        return 0;
    }

    timer* current_ = nullptr;
};

}  // namespace

kqcode_t platform::read_timer_registry(const std::string& path) {
    timer_reader reader(path);
    kqcode_t code = reader.read();
    if (code >= 0) timers.swap(reader.read_timers);
    return code;
}

void platform::forget_timer_registry() {
    timers.clear();
}

ntimer_cfg_t* ntimer_cfg_find_by_name(const schar* name) {
    if (name == nullptr) return nullptr;
    auto found = timers.find(std::string_view(name));
    return found != timers.end() ? &found->second.entry : nullptr;
}
