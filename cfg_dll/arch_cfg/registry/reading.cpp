#include "registry/reading.h"

#include "registry/answers.h"

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
    const bool knows = !in_progress->gave_up_ && in_progress->texts_.is_complete();
    return knows ? in_progress : nullptr;
}

void reading_index::append(const arch_cfg_t& arch) {
    if (current_section_ != nullptr)
        (void)any_answer(*current_section_, [&](const auto& field) {
            texts_.add(text_in(field), *current_section_);
            return false;
        });
    texts_.add(text_in(arch.name), arch);
    current_section_ = &arch;
}

bool reading_index::has_section(const schar* name) const {
    return texts_.contains(name,
                           [=](const arch_cfg_t& arch) { return same_text(arch.name, name); });
}

bool reading_index::has_destination(std::string_view text, const arch_cfg_t* except) const {
    const auto matches = [=](const arch_cfg_t& arch) {
        return &arch != except && answers_to(arch, folded_text(text.data()));
    };
    return (current_section_ != nullptr && matches(*current_section_)) ||
           texts_.contains(text, matches);
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
