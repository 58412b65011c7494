// An index of what destinations answer to.
#ifndef ARCH_REGISTRY_DESTINATION_INDEX_H
#define ARCH_REGISTRY_DESTINATION_INDEX_H

#include "registry/answers.h"
#include "registry/text_index.h"

namespace arch {

// Good for as long as no record that was added changes.
class destination_index {
  public:
    void add(const arch_cfg_t& arch) {
        (void)any_answer(arch, [&](const auto& field) {
            texts_.add(text_in(field), arch);
            return false;
        });
    }

    bool is_complete() const { return texts_.is_complete(); }

    // Whether one of the records but `except` answers to a text, which is terminated.
    bool contains(std::string_view text, const arch_cfg_t* except = nullptr) const {
        return texts_.contains(text, [=](const arch_cfg_t& arch) {
            return &arch != except && answers_to(arch, folded_text(text.data()));
        });
    }

  private:
    text_index texts_;
};

}  // namespace arch

#endif
