// The texts that a record is found by.
#ifndef ARCH_REGISTRY_ANSWERS_H
#define ARCH_REGISTRY_ANSWERS_H

#include "common/folded_text.h"
#include "registry/registry.h"

namespace arch {

// Whether a condition holds for one of the fields that search texts are compared with.
// A call would cost more than most comparisons.
template <typename Condition>
[[gnu::always_inline]] inline bool any_answer(const arch_cfg_t& arch, Condition holds) {
    switch (arch.type) {
        case ARCH_TYPE_LOCAL:
        case ARCH_TYPE_RAFT:
        case ARCH_TYPE_LEARNER:
            return holds(arch.dest);
        case ARCH_TYPE_REMOTE:
            return holds(arch.timer_name);
        case ARCH_TYPE_REALTIME:
        case ARCH_TYPE_SYNC:
        case ARCH_TYPE_ASYNC:
        case ARCH_TYPE_TIMELY:
            for (const auto& name : instance_names(arch))
                if (holds(name)) return true;
            return false;
        default:
            return false;
    }
}

[[gnu::always_inline]] inline bool answers_to(const arch_cfg_t& arch, const folded_text& text) {
    return any_answer(arch, [&](const auto& field) { return text.equals(field); });
}

}  // namespace arch

#endif
