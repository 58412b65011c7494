// Changes of the Raft group: what a change makes of it, and when it is too dangerous to be made
// without --force.
#include "ini.h"
#include "raft.h"
#include "raft_danger.h"
#include "raft_group.h"
#include "raft_operations.h"
#include "text.h"

namespace {

struct action_row {
    raft_action action;
    const char* name;
    const char* advice;  // what is to be done at the other nodes, and when
};

constexpr action_row action_rows[] = {
    {raft_action::add, "add",
     "A new voter counts at once, and has no log yet. Safer: `learner` at every node, then "
     "`promote` when it has caught up."},
    {raft_action::learner, "learner",
     "Add it at every other node too, then start it with RAFT_LEARNER = 1."},
    {raft_action::remove, "remove",
     "Stop the member first, remove it at every other node too, then `clear` its own file."},
    {raft_action::promote, "promote",
     "Promote when the learner has caught up, at every node: its own file as well."},
    {raft_action::replace, "replace", "Give every node the same list."},
    {raft_action::address, "address",
     "Change the member's own file first, then the other nodes one after the other."},
    {raft_action::settings, "settings",
     "The other nodes' ARCH_DEST_ID, ARCH_DEST_IP and ARCH_DEST_PORT have to name the same."},
    {raft_action::clear, "clear",
     "The other nodes keep this one as a member: `remove` it there first."},
};

const action_row& row_of(raft_action action) {
    for (const action_row& row : action_rows)
        if (row.action == action) return row;
    return action_rows[0];
}

void move_name(const std::string& name, std::set<std::string>& from, std::set<std::string>& to) {
    if (from.erase(name) > 0) to.insert(name);
}

raft_group replaced(const raft_group& group, const std::vector<std::string>& names) {
    raft_group after{{}, group.learners};
    for (const std::string& name : names)
        if (group.voters.contains(name)) after.voters.insert(name);
    return after;
}

// The group as it is after a change, as far as this node's file says.
raft_group group_after(const raft_group& before, const raft_request& request,
                       const cluster_node& node) {
    raft_group after = before;
    std::vector<std::string> names;
    for (const std::string& name : request.names)
        names.push_back(upper_case(name));
    // The first member added makes this node one.
    bool grows = request.action == raft_action::add || request.action == raft_action::learner;
    if (grows && !node.self) after.voters.insert(upper_case(node.name));
    if (request.action == raft_action::clear) after = {};
    if (request.action == raft_action::replace) after = replaced(before, names);
    for (const std::string& name : names) {
        if (request.action == raft_action::add) after.voters.insert(name);
        if (request.action == raft_action::learner) after.learners.insert(name);
        if (request.action == raft_action::promote) move_name(name, after.learners, after.voters);
        if (request.action == raft_action::remove && after.voters.erase(name) == 0)
            after.learners.erase(name);
    }
    return after;
}

class raft_changer {
  public:
    raft_changer(const change_options& options, const raft_request& request, output& out)
        : options_(options), request_(request), out_(out), row_(row_of(request.action)) {}

    exit_status run() {
        output nowhere("", json_form);
        node_ = read_node(options_.directory, nowhere).node;
        if (node_ && node_->archiving) plan();
        if (std::optional<danger> found = worst_danger()) {
            if (!options_.force) return refuse(*found);
            change_.remarks.push_back("Forced: " + found->text + ".");
        }
        change_.command = std::string("raft ") + row_.name;
        change_.what = join(request_.names, " ");
        change_.apply = [this] { return carry_out_raft(request_); };
        exit_status status = run_change(options_, change_, out_);
        set_groups();
        return status;
    }

  private:
    // A file that does not load is run_change's to refuse.
    void plan() {
        before_ = group_of(*node_);
        after_ = group_after(before_, request_, *node_);
        change_.remarks = group_consequences(before_, after_);
        change_.remarks.emplace_back(row_.advice);
        if (!drops_learner_key()) return;
        std::string role = request_.action == raft_action::clear ? "in no group" : "a voter";
        change_.remarks.push_back("RAFT_LEARNER is never written back: this node is " + role +
                                  " from its next start on.");
    }

    bool names_self() const {
        for (const std::string& name : request_.names)
            if (same_text(name, node_->name)) return true;
        return false;
    }

    bool drops_learner_key() const {
        return node_->archiving && node_->self && node_->self->learner;
    }

    std::optional<danger> worst_danger() const {
        if (!node_) return std::nullopt;
        if (std::optional<danger> found = danger_of_names()) return found;
        bool meant = request_.action == raft_action::clear ||
                     (request_.action == raft_action::promote && names_self());
        if (drops_learner_key() && !meant)
            return danger{
                "this node is a learner, and RAFT_LEARNER = 1 is not written back: after "
                "its next start it would vote",
                "Make the change with an editor, or `promote " + node_->name +
                    "` first when it has caught up."};
        return request_.action == raft_action::clear ? danger_of_leaving(before_, node_->name)
                                                     : danger_of_step(before_, after_);
    }

    std::optional<danger> danger_of_names() const {
        bool self = names_self();
        if (request_.action == raft_action::remove && self)
            return danger{node_->name + " is this node, which `remove` does not take out",
                          "Remove it at the other nodes, then `kqarch raft " + node_->directory +
                              " clear` here."};
        if (request_.action == raft_action::replace && !self)
            return danger{"the list of voters does not name this node, " + node_->name,
                          "Name every voter of the new group, this node too."};
        return std::nullopt;
    }

    exit_status refuse(const danger& found) {
        for (const char* field :
             {"diff", "lost", "consequences", "would_start", "start_code", "backup", "made"})
            out_.set(field, nullptr);
        out_.set("made", false);
        set_groups();
        const password_list& passwords = node_->file.passwords();
        return out_.fail(exit_refused, passwords.hide(found.text), node_->place_of(0),
                         passwords.hide(found.hint) + " --force makes the change all the same.");
    }

    void set_groups() {
        bool known = node_.has_value();
        out_.set("group_before", known ? as_document(before_) : nlohmann::ordered_json(nullptr));
        out_.set("group_after", known ? as_document(after_) : nlohmann::ordered_json(nullptr));
    }

    const change_options& options_;
    const raft_request& request_;
    output& out_;
    const action_row& row_;
    std::optional<cluster_node> node_;
    raft_group before_;
    raft_group after_;
    requested_change change_;
};

}  // namespace

exit_status run_raft_change(const change_options& options, const raft_request& request,
                            output& out) {
    return raft_changer(options, request, out).run();
}
