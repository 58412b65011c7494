#include "add.h"

#include "clause.h"

namespace {

captured plain(kqcode_t code, const std::string& said = {}) {
    return {code, said};
}

// Silent where the directory cannot be used.
captured added_directory(kqcode_t code) {
    return code == ARCH_E_INVALID_DEST ? refuse_directory() : plain(code);
}

captured add_local(const parsed_clause& clause) {
    const arch_cfg_t& asked = clause.record;
    arch_cfg_t* added = nullptr;
    return added_directory(arch_cfg_add_local(clause.dest.c_str(), asked.space_limit,
                                              static_cast<usint>(asked.file_size), asked.hang_flag,
                                              asked.flush_buf_size, &added));
}

// The clause's incoming path travels in the timer's field.
captured add_remote(parsed_clause& clause) {
    const arch_cfg_t& asked = clause.record;
    if (asked.timer_name[0] == '\0')
        return plain(ARCH_E_NO_INCOMING_PATH, "the clause names no INCOMING_PATH");
    arch_cfg_t* added = nullptr;
    return added_directory(arch_cfg_add_remote(
        asked.timer_name, clause.dest.data(), asked.space_limit,
        static_cast<usint>(asked.file_size), asked.hang_flag, asked.flush_buf_size, &added));
}

captured add_subscriber(parsed_clause& clause) {
    arch_cfg_t* added = nullptr;
    return plain(arch_cfg_add_subscribe(&clause.record, clause.dest.data(), &added));
}

// The list is split as when it is read. Whether others use a name is for start-up to say.
captured add_standby(parsed_clause& clause, bool standby) {
    constexpr ulint primary_mode = 0;
    constexpr ulint standby_mode = 2;
    arch_cfg_t& asked = clause.record;
    arch_cfg_sys_t nobody{};
    kqcode_t code = arch_cfg_inst_dests_validate(&nobody, &asked, clause.dest.c_str());
    if (code < 0) return plain(code);
    arch_cfg_t* added = nullptr;
    switch (asked.type) {
        case ARCH_TYPE_REALTIME:
            return plain(arch_cfg_add_march(&asked, &added));
        case ARCH_TYPE_TIMELY:
            return plain(arch_cfg_add_timely(&asked, &added));
        case ARCH_TYPE_ASYNC:
            return plain(arch_cfg_add_timer(&asked, &added));
        default:
            return plain(arch_cfg_add_sync(&asked, standby ? standby_mode : primary_mode, &added));
    }
}

captured add_destination(parsed_clause clause, bool standby) {
    ulint type = clause.record.type;
    if (clause.result.code < 0) return clause.result;
    if (type == ARCH_TYPE_NONE) return plain(ARCH_E_INVALID_TYPE, "the clause names no TYPE");
    if (type == ARCH_TYPE_RAFT || type == ARCH_TYPE_LEARNER) return refuse_raft(type);
    if (clause.dest.empty()) return plain(ARCH_E_INVALID_DEST, "the clause names no DEST");
    if (std::optional<captured> misplaced = misplaced_keyword(clause, type)) return *misplaced;
    if (clause.raft_vote_interval != ARCH_UNSET_LONG)
        arch_cfg_sys_set_raft_vote_interval(clause.raft_vote_interval);
    if (type == ARCH_TYPE_LOCAL) return add_local(clause);
    if (type == ARCH_TYPE_REMOTE) return add_remote(clause);
    if (type == ARCH_TYPE_SUBSCRIBE) return add_subscriber(clause);
    return add_standby(clause, standby);
}

}  // namespace

exit_status run_add(const add_options& options, output& out) {
    clause_text given = take_clause(options.clause);
    requested_change change{
        .command = "add",
        .what = masked_clause(given.text, ARCH_TYPE_NONE),
        .passwords = passwords_in_clause(given.text, ARCH_TYPE_NONE),
        // The module changes what it is handed: each run has a clause of its own.
        .apply = [&] { return add_destination(parse_clause(given), options.standby); }};
    return run_change(options, change, out);
}
