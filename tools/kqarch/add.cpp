#include "add.h"

#include <utility>

#include "clause.h"
#include "instance.h"
#include "settings.h"
#include "target.h"
#include "text.h"

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

// The section that archives to the directory, or stores the archives of the instance, already.
std::string user_of(const parsed_clause& clause) {
    bool remote = clause.record.type == ARCH_TYPE_REMOTE;
    std::string path = target{remote ? clause.record.timer_name : clause.dest}.text();
    arch_cfg_hold hold;
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next) {
        bool stores = has_directory(arch->type);
        if (stores && same_text(arch->dest, path))
            return std::string("section [") + arch->name + "] uses " + path + " already";
        if (arch->type == ARCH_TYPE_REMOTE && same_text(arch->timer_name, clause.dest))
            return std::string("section [") + arch->name + "] stores the archives of " +
                   arch->timer_name + " already";
    }
    return "";
}

// What the module says nothing about.
captured explained(captured result, const parsed_clause& clause) {
    if (result.code == ARCH_E_DEST_EXISTS || result.code == ARCH_E_DUPLICATE_PATH)
        result.said = user_of(clause);
    if (result.code == ARCH_E_TIMER_NOT_FOUND && !clause.names("ARCH_TIMER_NAME"))
        result.said = "the clause names no ARCH_TIMER_NAME";
    return result;
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
    if (type == ARCH_TYPE_LOCAL) return explained(add_local(clause), clause);
    if (type == ARCH_TYPE_REMOTE) return explained(add_remote(clause), clause);
    if (type == ARCH_TYPE_SUBSCRIBE) return explained(add_subscriber(clause), clause);
    return explained(add_standby(clause, standby), clause);
}

}  // namespace

exit_status run_add(const add_options& options, output& out) {
    clause_text given = take_clause(options.clause);
    requested_change change{.command = "add",
                            .what = masked_clause(given.text, ARCH_TYPE_NONE),
                            .passwords = passwords_in_clause(given.text, ARCH_TYPE_NONE),
                            .keeps_learner = true};
    // The module changes what it is handed: each run has a clause of its own.
    change.apply = [&] {
        parsed_clause clause = parse_clause(given);
        change.doubts = doubts_of(clause, clause.record.type);
        return add_destination(std::move(clause), options.standby);
    };
    return run_change(options, change, out);
}
