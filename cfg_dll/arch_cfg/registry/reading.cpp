#include "registry/reading.h"

#include "registry/registry.h"

namespace arch {
namespace {

// Written by start-up alone, while no other thread uses the registry.
reading_index* in_progress = nullptr;

}  // namespace

reading_index::reading_index() {
    in_progress = this;
}

reading_index::~reading_index() {
    in_progress = nullptr;
}

reading_index* reading_index::of(const arch_cfg_sys_t& registry) {
    if (in_progress == nullptr || &registry != &arch_cfg_sys) return nullptr;
    const bool knows = !in_progress->gave_up_ && in_progress->names_.is_complete() &&
                       in_progress->destinations_.is_complete();
    return knows ? in_progress : nullptr;
}

void reading_index::append(const arch_cfg_t& arch) {
    if (current_section_ != nullptr) destinations_.add(*current_section_);
    names_.add(text_in(arch.name), arch);
    current_section_ = &arch;
}

bool reading_index::has_section(const schar* name) const {
    return names_.contains(name,
                           [=](const arch_cfg_t& arch) { return same_text(arch.name, name); });
}

bool reading_index::has_destination(std::string_view text, const arch_cfg_t* except) const {
    const bool looks_at_current = current_section_ != nullptr && current_section_ != except;
    return (looks_at_current && answers_to(*current_section_, folded_text(text.data()))) ||
           destinations_.contains(text, except);
}

bool section_exists(const arch_cfg_sys_t& registry, const schar* name) {
    const reading_index* index = reading_index::of(registry);
    return index != nullptr ? index->has_section(name) : find_section(registry, name) != nullptr;
}

bool destination_exists(const arch_cfg_sys_t& registry, std::string_view text,
                        const arch_cfg_t* except) {
    const reading_index* index = reading_index::of(registry);
    return index != nullptr ? index->has_destination(text, except)
                            : find_destination(registry, text.data(), except) != nullptr;
}

}  // namespace arch
