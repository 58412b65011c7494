#include "mal_cfg.h"

#include <pthread.h>

#include <limits>
#include <unordered_map>
#include <vector>

#include "config_reader.h"
#include "instance_files.h"
#include "text.h"

using namespace platform;

namespace {

struct mal_section {
    std::string inst_name;
    std::string inst_host;
    ulint inst_port = 0;
    std::string host;
    ulint port = 0;
};

constexpr config_row<mal_section> mal_rows[] = {
    {"MAL_INST_NAME", 1, KQ_SYSNAME_MAX, nullptr, &mal_section::inst_name},
    {"MAL_INST_HOST", 0, 64, nullptr, &mal_section::inst_host},
    {"MAL_INST_PORT", 0, 65535, &mal_section::inst_port, nullptr},
    {"MAL_HOST", 0, ~0u, nullptr, &mal_section::host},
    {"MAL_PORT", 0, 65535, &mal_section::port, nullptr},
};

struct mal_registry {
    std::vector<mal_cfg_t> instances;
    // By instance name.
    std::unordered_map<std::string, usint, hash_ignoring_case, same_ignoring_case> sites;
};

pthread_mutex_t mal_mutex = PTHREAD_ERRORCHECK_MUTEX_INITIALIZER_NP;
mal_registry registry;
mal_cfg_sys_t mal_cfg_sys;

void publish(mal_registry&& read) {
    mal_cfg_sys_enter();
    std::swap(registry, read);
    mal_cfg_sys.n_mal = static_cast<usint>(registry.instances.size());
    mal_cfg_sys.mal_arr = registry.instances.data();
    mal_cfg_sys_exit();
}

class mal_reader : public config_reader {
  public:
    explicit mal_reader(const std::string& path) : config_reader(path) {
        constexpr std::size_t usual_instances = 100;
        read_registry.instances.reserve(usual_instances);
    }
    mal_registry read_registry;

  private:
    kqcode_t on_section(const schar*) override {
        kqcode_t code = finish_section();
        if (code < 0) return code;
        section_ = {};
        section_line_ = line();
        return 0;
    }

    kqcode_t on_key(const schar* key, const schar* value) override {
        if (section_line_ == 0) return refuse(ARCH_E_NO_SECTION, "a key before the first section");
        bool is_name = equal_ignoring_case(key, mal_rows[0].key);
        if (is_name && !section_.inst_name.empty()) return refuse_duplicate();
        kqcode_t code = store(mal_rows, section_, key, value);
        if (code < 0 || !is_name) return code;
        auto site = static_cast<usint>(read_registry.instances.size());
        return read_registry.sites.emplace(section_.inst_name, site).second ? 0
                                                                            : refuse_duplicate();
    }

    kqcode_t on_end() override { return finish_section(); }

    kqcode_t refuse_duplicate() const {
        return refuse(ARCH_E_DUPLICATE_NAME, "MAL_INST_NAME is given twice");
    }

    kqcode_t finish_section() {
        if (section_line_ == 0) return 0;
        if (section_.inst_name.empty()) {
            return refuse_at(section_line_, ARCH_E_INVALID_VALUE, "MAL_INST_NAME is missing");
        }
        if (read_registry.instances.size() == std::numeric_limits<usint>::max()) {
            return refuse_at(section_line_, ARCH_E_INVALID_VALUE, "too many instances");
        }
        mal_cfg_t& instance = read_registry.instances.emplace_back();
        copy_text(instance.inst_name, section_.inst_name);
        copy_text(instance.inst_ip, section_.inst_host);
        instance.inst_port = static_cast<usint>(section_.inst_port);
        return 0;
    }

    mal_section section_;
    ulint section_line_ = 0;  // 0 before the first section
};

}  // namespace

kqcode_t platform::read_mal_registry(const std::string& path) {
    mal_reader reader(path);
    kqcode_t code = reader.read();
    if (code >= 0) publish(std::move(reader.read_registry));
    return code;
}

void platform::forget_mal_registry() {
    publish({});
}

mal_cfg_t* mal_cfg_get_by_inst_name(const schar* inst_name) {
    if (inst_name == nullptr) return nullptr;
    auto found = registry.sites.find(std::string_view(inst_name));
    return found != registry.sites.end() ? &registry.instances[found->second] : nullptr;
}

schar* mal_cfg_get_inst_name_by_site(usint mal_seqno) {
    return mal_seqno < registry.instances.size() ? registry.instances[mal_seqno].inst_name
                                                 : nullptr;
}

void mal_cfg_sys_enter(void) {
    pthread_mutex_lock(&mal_mutex);
}

mal_cfg_sys_t* mal_cfg_sys_get(void) {
    return &mal_cfg_sys;
}

void mal_cfg_sys_exit(void) {
    pthread_mutex_unlock(&mal_mutex);
}
