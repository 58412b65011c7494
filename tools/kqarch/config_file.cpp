#include "config_file.h"

#include <algorithm>

#include "arch_cfg.h"
#include "settings.h"
#include "text.h"

kqcode_t config_file::read(std::string path) {
    *this = {};
    path_ = std::move(path);
    std::optional<file_snapshot> taken = take_snapshot(path_);
    if (!taken || !taken->exists) return ARCH_E_FILE_OPEN;
    snapshot_ = *std::move(taken);
    return read_lines();
}

kqcode_t config_file::parse(std::string text, std::string path) {
    *this = {};
    path_ = std::move(path);
    snapshot_.bytes = std::move(text);
    return read_lines();
}

kqcode_t config_file::read_lines() {
    // Most files have fewer lines; one of blank lines must not take room for each.
    constexpr ptrdiff_t usual_lines = 500;
    lines_.reserve(static_cast<size_t>(
        std::min(usual_lines, std::count(text().begin(), text().end(), '\n') + 1)));
    std::string copy = text();
    kqcode_t code = kq_ini_walk_text(copy.data(), copy.size(), append, this);
    if (code < 0) lines_.clear();
    learn_passwords();
    return code;
}

kqcode_t config_file::append(const kq_ini_line_t* line, void* file) {
    std::vector<config_line>& lines = static_cast<config_file*>(file)->lines_;
    config_line added{line->number, line->kind, line->key, line->value, "", 0};
    if (line->kind != KQ_INI_KEY) {
        // A bad line may have been meant as a header: what follows is not the old section's.
        added.section = added.key;
        added.section_line = added.number;
    } else if (!lines.empty()) {
        added.section = lines.back().section;
        added.section_line = lines.back().section_line;
    }
    lines.push_back(std::move(added));
    return 0;
}

const config_file::places& config_file::known_places() const {
    if (places_) return *places_;
    places_.emplace();
    for (const config_line& line : lines_) {
        std::string name = upper_case(line.key);
        if (line.kind == KQ_INI_SECTION) places_->sections.emplace(name, line.number);
        if (line.kind != KQ_INI_KEY) continue;
        places_->keys[{line.section_line, name}] = line.number;
        places_->last_keys[name] = line.number;
    }
    return *places_;
}

ulint config_file::section_line(std::string_view section) const {
    auto found = known_places().sections.find(upper_case(section));
    return found != known_places().sections.end() ? found->second : 0;
}

ulint config_file::key_line(std::string_view section, std::string_view key) const {
    auto found = known_places().keys.find({section_line(section), upper_case(key)});
    return found != known_places().keys.end() ? found->second : 0;
}

ulint config_file::key_line(std::string_view key) const {
    auto found = known_places().last_keys.find(upper_case(key));
    return found != known_places().last_keys.end() ? found->second : 0;
}

// A section that only looks like a subscriber's (a misspelt type, say) is treated as one.
bool config_file::looks_like_subscriber(const config_line& line) const {
    if (line.kind == KQ_INI_SECTION || same_text(line.key, "ARCH_TYPE"))
        return upper_case(line.key + line.value).find("SUB") != std::string::npos;
    return same_text(line.key, "ARCH_SUBSCRIBE_MODE") ||
           same_text(line.key, "ARCH_THRESHOLD_PER_SECOND");
}

text_place config_file::place_of(const config_line& line) const {
    if (same_text(line.key, "ARCH_INCOMING_PATH") || same_text(line.key, "ARCH_RECV_PATH"))
        return text_place::path;
    if (path_sections_.contains(line.section_line)) return text_place::path;
    bool subscriber =
        subscriber_sections_.contains(line.section_line) && same_text(line.key, "ARCH_DEST");
    return subscriber ? text_place::subscriber : text_place::other;
}

void config_file::learn_passwords() {
    for (const config_line& line : lines_) {
        if (looks_like_subscriber(line)) subscriber_sections_.insert(line.section_line);
        if (line.kind != KQ_INI_KEY || !same_text(line.key, "ARCH_TYPE")) continue;
        ulint type = arch_cfg_get_arch_type_by_name(line.value.c_str());
        if (has_directory(type)) path_sections_.insert(line.section_line);
    }
    std::string_view rest = text();
    ulint first_of_rest = 1;
    auto whole = [&](const config_line& line) {
        for (; first_of_rest < line.number; ++first_of_rest)
            rest.remove_prefix(rest.find('\n') + 1);
        return rest.substr(0, rest.find('\n'));
    };
    for (const config_line& line : lines_) {
        passwords_.learn(line.key, text_place::other);
        if (line.kind == KQ_INI_BAD) passwords_.learn(whole(line), text_place::line);
        if (line.kind != KQ_INI_KEY) continue;
        passwords_.learn(line.value, place_of(line));
        // A "=" inside a password tears it apart where "ARCH_DEST =" is missing.
        if (line.key.find('/') != line.key.npos)
            passwords_.learn(line.key + "=" + line.value, text_place::other);
    }
}
