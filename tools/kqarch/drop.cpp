#include "drop.h"

#include "clause.h"

namespace {

captured drop_destination(const target& which) {
    arch_cfg_t* found = find(which);
    if (found == nullptr) return {ARCH_E_DEST_NOT_FOUND, ""};
    if (found->type == ARCH_TYPE_RAFT || found->type == ARCH_TYPE_LEARNER)
        return refuse_raft(found->type);
    return {which.subscriber ? arch_cfg_drop_low(found) : arch_cfg_drop(which.text().c_str()), ""};
}

}  // namespace

exit_status run_drop(const drop_options& options, output& out) {
    requested_change change{.command = "drop",
                            .what = options.which.shown(),
                            .apply = [&] { return drop_destination(options.which); },
                            .keeps_learner = true};
    change.passwords.learn(options.which.dest, text_place::other);
    return run_change(options, change, out);
}
