#include "modify.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "clause.h"
#include "instance.h"
#include "os.h"
#include "settings.h"
#include "utl.h"

namespace {

bool waits(ulint type) {
    return type == ARCH_TYPE_REALTIME || type == ARCH_TYPE_TIMELY;
}

bool has_timer(ulint type) {
    return type == ARCH_TYPE_ASYNC || type == ARCH_TYPE_SUBSCRIBE;
}

template <size_t Size>
void copy_text(schar (&field)[Size], const std::string& text) {
    field[text.copy(field, Size - 1)] = '\0';
}

// Whether a text of that length is read back from kqarch.ini as it is.
bool comes_back(const std::string& text, size_t longest) {
    auto is_control = [](char letter) {
        return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f;
    };
    bool outer_blank = text.starts_with(' ') || text.ends_with(' ');
    return !text.empty() && text.size() <= longest && !outer_blank &&
           std::none_of(text.begin(), text.end(), is_control);
}

captured refuse_text(const char* keyword, size_t longest) {
    return {ARCH_E_INVALID_DEST,
            std::string(keyword) + " would not be read back from kqarch.ini as it is: it has no, " +
                "or more than " + std::to_string(longest) + " characters, or a control character"};
}

// A change of one record: what the clause asks for is checked, the record that comes of it built
// aside, and only then put in the place of the stored one.
class modification {
  public:
    modification(parsed_clause& clause, const arch_cfg_t& stored)
        : clause_(clause), stored_(stored), wanted_(clause.record), result_(stored) {
        if (wanted_.type == ARCH_TYPE_NONE) wanted_.type = stored.type;
        copy_text(wanted_.name, stored.name);
    }

    captured check() KQ_REQUIRES(arch_cfg_sys.mutex) {
        if (std::optional<captured> misplaced = misplaced_keyword(clause_, wanted_.type))
            return *misplaced;
        keep_values();
        dest_ = dest_buffer(clause_.dest);
        kqcode_t code =
            arch_cfg_validate_for_modify(&wanted_, &stored_, clause_.named, dest_.data());
        if (code < 0) return {code, ""};
        dest_.resize(std::strlen(dest_.c_str()));
        if (wanted_.type != stored_.type) change_type();
        take_values();
        captured texts = take_texts();
        // It settles the defaults of the type, whatever else it says: that start-up says too.
        if (waits(wanted_.type)) (void)arch_cfg_validate(&result_, 1, 1);
        return texts;
    }

    const arch_cfg_t& result() const { return result_; }

  private:
    bool names(const char* keyword) const { return clause_.names(keyword); }

    // What the clause leaves out, and the check does not fill in, stays as stored.
    void keep_values() {
        if (!names("FILE_SIZE")) wanted_.file_size = stored_.file_size;
        if (!names("SPACE_LIMIT")) wanted_.space_limit = stored_.space_limit;
        if (!names("ARCH_FLUSH_BUF_SIZE")) wanted_.flush_buf_size = stored_.flush_buf_size;
        if (!names("HANG_FLAG")) wanted_.hang_flag = stored_.hang_flag;
        if (!names("ARCH_RECOVER_TIME")) wanted_.arch_recover_time = stored_.arch_recover_time;
        if (!names("ARCH_SEND_DELAY")) wanted_.arch_send_delay = stored_.arch_send_delay;
        if (!waits(wanted_.type) || !waits(stored_.type)) return;
        if (!names("WAIT_APPLY")) wanted_.wait_apply = stored_.wait_apply;
        if (!names("ARCH_FAILOVER")) wanted_.arch_failover = stored_.arch_failover;
    }

    // A new record, with what both types have in common: the name, the directory or the instances.
    // The check has seen to it that there is one instance where a REMOTE is or comes.
    void change_type() {
        arch_init(&result_, stored_.name);
        result_.type = wanted_.type;
        result_.status = stored_.status;
        result_.epno = stored_.epno;
        if (has_directory(stored_.type) && has_directory(wanted_.type))
            copy_text(result_.dest, stored_.dest);
        if (stored_.type == ARCH_TYPE_REMOTE) take_instance(stored_.timer_name);
        if (!has_directory(stored_.type) && stored_.type != ARCH_TYPE_SUBSCRIBE) keep_instances();
    }

    void take_instance(const schar* name) {
        if (wanted_.type == ARCH_TYPE_LOCAL || wanted_.type == ARCH_TYPE_SUBSCRIBE) return;
        copy_text(result_.dest_insts[0], name);
        copy_text(result_.dest, name);
    }

    void keep_instances() {
        if (wanted_.type == ARCH_TYPE_REMOTE) return copy_text(result_.timer_name, stored_.dest);
        if (wanted_.type == ARCH_TYPE_LOCAL || wanted_.type == ARCH_TYPE_SUBSCRIBE) return;
        std::memcpy(result_.dest_insts, stored_.dest_insts, sizeof result_.dest_insts);
        result_.n_inst = stored_.n_inst;
        copy_text(result_.dest, stored_.dest);
    }

    // The values that the type has; the others stay those of a new record.
    void take_values() {
        ulint type = wanted_.type;
        if (has_directory(type)) {
            result_.file_size = wanted_.file_size;
            result_.space_limit = wanted_.space_limit;
            result_.flush_buf_size = wanted_.flush_buf_size;
        }
        if (type == ARCH_TYPE_LOCAL) result_.hang_flag = wanted_.hang_flag;
        if (type == ARCH_TYPE_SYNC) result_.arch_recover_time = wanted_.arch_recover_time;
        if (waits(type)) {
            result_.wait_apply = wanted_.wait_apply;
            result_.arch_failover = wanted_.arch_failover;
        }
        if (has_timer(type)) result_.arch_send_delay = wanted_.arch_send_delay;
        if (type != ARCH_TYPE_SUBSCRIBE) return;
        result_.arch_subscb_mode = wanted_.arch_subscb_mode;
        result_.arch_threshold_per_second = wanted_.arch_threshold_per_second;
    }

    captured take_texts() KQ_REQUIRES(arch_cfg_sys.mutex) {
        if (has_timer(wanted_.type)) {
            if (!comes_back(wanted_.timer_name, KQ_SYSNAME_MAX))
                return refuse_text("ARCH_TIMER_NAME", KQ_SYSNAME_MAX);
            copy_text(result_.timer_name, wanted_.timer_name);
        }
        if (wanted_.type == ARCH_TYPE_LOCAL) return take_local();
        if (wanted_.type == ARCH_TYPE_REMOTE) return take_remote();
        if (wanted_.type == ARCH_TYPE_SUBSCRIBE) return take_subscriber();
        return take_instances();
    }

    captured take_local() {
        if (!clause_.dest.empty()) return take_path(clause_.dest, "DEST");
        if (result_.dest[0] != '\0') return {};
        return {ARCH_E_INVALID_DEST, "the clause names no DEST"};
    }

    captured take_remote() {
        if (!clause_.dest.empty()) {
            if (!comes_back(clause_.dest, ARCH_INST_NAME_MAX))
                return refuse_text("DEST", ARCH_INST_NAME_MAX);
            copy_text(result_.timer_name, clause_.dest);
            kq_strupr(result_.timer_name);
        }
        return take_path(wanted_.timer_name, "INCOMING_PATH");
    }

    // As an adder does: without separators at its end, and a missing directory is created.
    captured take_path(std::string path, const char* keyword) {
        while (path.size() > 1 && path.ends_with('/'))
            path.pop_back();
        if (!comes_back(path, KQ_PATHNAME_MAX)) return refuse_text(keyword, KQ_PATHNAME_MAX);
        bool stays = path == result_.dest;
        copy_text(result_.dest, path);
        if (stays || arch_cfg_check_local_path_validate(result_.dest, 1) != 0) return {};
        return refuse_directory();
    }

    // The check has trimmed it and put the stored one in the place of none.
    captured take_subscriber() {
        if (!comes_back(dest_, KQ_SYSNAME_MAX)) return refuse_text("DEST", KQ_SYSNAME_MAX);
        copy_text(result_.dest, dest_);
        return {};
    }

    // Whether others use a name is for start-up to say.
    captured take_instances() KQ_REQUIRES(arch_cfg_sys.mutex) {
        if (clause_.dest.empty()) return {};
        if (!comes_back(clause_.dest, KQ_SYSNAME_MAX)) return refuse_text("DEST", KQ_SYSNAME_MAX);
        arch_cfg_sys_t nobody{};
        return {arch_cfg_inst_dests_validate(&nobody, &result_, clause_.dest.c_str()), ""};
    }

    const parsed_clause& clause_;
    const arch_cfg_t& stored_;
    arch_cfg_t wanted_;
    arch_cfg_t result_;
    std::string dest_;
};

captured modify_destination(parsed_clause clause, const target& which,
                            std::vector<std::string>& doubts) {
    if (clause.result.code < 0) return clause.result;
    arch_cfg_t* stored = find(which);
    if (stored == nullptr) return {ARCH_E_DEST_NOT_FOUND, ""};
    if (stored->type == ARCH_TYPE_RAFT || stored->type == ARCH_TYPE_LEARNER)
        return refuse_raft(stored->type);
    arch_cfg_hold hold;
    modification asked(clause, *stored);
    if (captured refused = asked.check(); refused.code < 0) return refused;
    doubts = doubts_of(clause, asked.result().type);
    arch_cfg_link_t place = stored->link;
    *stored = asked.result();
    stored->link = place;
    if (clause.raft_vote_interval != ARCH_UNSET_LONG)
        os_interlock_write(&arch_cfg_sys.raft_vote_interval, clause.raft_vote_interval);
    return {arch_cfg_sys_write_to_file(), ""};
}

}  // namespace

exit_status run_modify(const modify_options& options, output& out) {
    clause_text given = take_clause(options.clause);
    // What a text names is never the subscriber: there, only a text with "@" holds a password.
    ulint type = options.which.subscriber ? ARCH_TYPE_SUBSCRIBE : ARCH_TYPE_LOCAL;
    requested_change change{.command = "modify",
                            .what = options.which.shown() + " " + masked_clause(given.text, type),
                            .passwords = passwords_in_clause(given.text, type),
                            .keeps_learner = true};
    change.apply = [&] {
        return modify_destination(parse_clause(given), options.which, change.doubts);
    };
    change.passwords.learn(options.which.dest, text_place::other);
    return run_change(options, change, out);
}
