#include "registry/reading.h"

#include "registry/answers.h"

namespace arch {
void reading_index::append(const arch_cfg_t& arch, std::string_view name) {
    if (current_section_ != nullptr) {
        (void)any_answer(*current_section_, [&](const auto& field) {
            texts_.add(text_kind::destination, text_in(field), field);
            return false;
        });
        had_subscriber_ = had_subscriber_ || is_subscriber(current_section_);
    }
    texts_.add(text_kind::section, name, arch.name);
    current_section_ = &arch;
}

bool section_exists(const arch_cfg_sys_t& registry, std::string_view name) {
    const reading_index* index = reading_index::of(registry);
    return index != nullptr ? index->has_section(name)
                            : find_section(registry, name.data()) != nullptr;
}

bool destination_exists(const arch_cfg_sys_t& registry, std::string_view text,
                        const arch_cfg_t* except) {
    const reading_index* index = reading_index::of(registry);
    // The index cannot leave out an earlier section.
    if (index == nullptr || index->is_earlier(except))
        return find_destination(registry, text.data(), except) != nullptr;
    const arch_cfg_t* current = index->current_section();
    return index->has_earlier_destination(text) || (except != current && current != nullptr &&
                                                    answers_to(*current, folded_text(text.data())));
}

bool subscriber_exists(const arch_cfg_sys_t& registry) {
    const reading_index* index = reading_index::of(registry);
    return index != nullptr ? index->has_subscriber()
                            : first_of_type(registry, ARCH_TYPE_SUBSCRIBE) != nullptr;
}

}  // namespace arch
