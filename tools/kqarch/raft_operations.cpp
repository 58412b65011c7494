#include "raft_operations.h"

#include <cstdio>

#include "ini.h"
#include "instance.h"
#include "text.h"

namespace {

// The new text of the whole file.
class configuration_text {
  public:
    configuration_text() : text_(ARCH_CFG_TEXT_SIZE + 1, '\0') {}

    schar* buffer() { return text_.data(); }

    kqcode_t write() const { return arch_cfg_sys_write_by_rec(text_.data(), 1); }

    kqcode_t take_and_write() {
        arch_cfg_hold hold;
        kqcode_t code = arch_cfg_sys_write_to_rec(text_.data());
        return code < 0 ? code : arch_cfg_sys_write_by_rec(text_.data(), 0);
    }

  private:
    std::string text_;
};

// Member names as the module takes them.
class name_list {
  public:
    explicit name_list(const std::vector<std::string>& names) : names_(names.size()) {
        for (size_t i = 0; i < names.size(); ++i)
            std::snprintf(names_[i].text, sizeof names_[i].text, "%s", names[i].c_str());
    }

    usint count() const { return static_cast<usint>(names_.size()); }
    sysname_t* data() { return names_.empty() ? nullptr : &names_.front().text; }

  private:
    struct member_name {
        sysname_t text;
    };
    static_assert(sizeof(member_name) == sizeof(sysname_t), "they lie back to back");

    std::vector<member_name> names_;
};

usint type_of(const std::string& name) KQ_REQUIRES(arch_cfg_sys.mutex) {
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        if ((arch->type == ARCH_TYPE_RAFT || arch->type == ARCH_TYPE_LEARNER) &&
            same_text(arch->dest, name))
            return arch->type;
    return ARCH_TYPE_NONE;
}

bool is_self(const std::string& name) {
    return same_text(name, ini_get_instance_name());
}

captured no_such_member(const std::string& name) {
    return {ARCH_E_DEST_NOT_FOUND, name + " is no member of the Raft group"};
}

captured written(kqcode_t code, configuration_text& text) {
    return {code < 0 ? code : text.write(), ""};
}

captured add(const raft_request& request, usint type) {
    configuration_text text;
    arch_cfg_t* added = nullptr;
    kqcode_t code = arch_cfg_add_learner_or_raft(
        request.names[0].c_str(), request.address.value_or("").c_str(), request.port.value_or(0),
        request.id.value_or(ARCH_UNSET_SHORT), request.centre.value_or(0), type, &added,
        text.buffer());
    if (code >= 0) arch_cfg_set_raft_cnt();
    return written(code, text);
}

captured remove(const raft_request& request) {
    configuration_text text;
    for (const std::string& name : request.names) {
        usint type = ARCH_TYPE_NONE;
        {
            arch_cfg_hold hold;
            type = type_of(name);
        }
        if (type == ARCH_TYPE_NONE) return no_such_member(name);
        if (type == ARCH_TYPE_LEARNER)
            arch_cfg_delete_learner(name.c_str(), ARCH_UNSET_SHORT, nullptr);
        else
            arch_cfg_delete_raft(name.c_str());
    }
    arch_cfg_set_raft_cnt();
    return {text.take_and_write(), ""};
}

captured promote(const raft_request& request) {
    configuration_text text;
    name_list names(request.names);
    for (const std::string& name : request.names) {
        arch_cfg_hold hold;
        if (!is_self(name) && type_of(name) == ARCH_TYPE_NONE) return no_such_member(name);
    }
    kqcode_t code = arch_cfg_change_learner_to_raft(names.count(), names.data(), text.buffer(),
                                                    nullptr, nullptr);
    if (code >= 0) arch_cfg_set_raft_cnt();
    return written(code, text);
}

captured replace(const raft_request& request) {
    configuration_text text;
    name_list names(request.names);
    for (const std::string& name : request.names) {
        arch_cfg_hold hold;
        if (!is_self(name) && type_of(name) != ARCH_TYPE_RAFT)
            return {ARCH_E_RAFT_TYPE_MISMATCH, name + " is no voter of the Raft group"};
    }
    return written(arch_cfg_change_to_new(names.count(), names.data(), text.buffer()), text);
}

// The module keeps the old address where the new one could not stand in the file; its log says so.
bool has_address(const raft_request& request) KQ_REQUIRES(arch_cfg_sys.mutex) {
    if (is_self(request.names[0])) return *request.address == arch_cfg_sys.xmal_ip;
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        if (same_text(arch->dest, request.names[0])) return *request.address == arch->arch_dest_ip;
    return false;
}

captured change_address(const raft_request& request) {
    configuration_text text;
    const std::string& name = request.names[0];
    {
        arch_cfg_hold hold;
        if (!is_self(name) && type_of(name) == ARCH_TYPE_NONE) return no_such_member(name);
        arch_cfg_update_raft_info(name.c_str(), request.address->c_str(), *request.port);
        if (!has_address(request)) return {ARCH_E_INVALID_VALUE, ""};
    }
    return {text.take_and_write(), ""};
}

// What is not asked for stays as it is.
raft_request completed(raft_request request) {
    arch_cfg_hold hold;
    const arch_cfg_sys_t& present = arch_cfg_sys;
    request.heartbeat = request.heartbeat.value_or(present.raft_hb_interval);
    request.vote = request.vote.value_or(present.raft_vote_interval);
    request.link_heartbeat = request.link_heartbeat.value_or(present.xmal_hb_interval);
    request.address = request.address.value_or(present.xmal_ip);
    request.port = request.port.value_or(present.xmal_port);
    request.id = request.id.value_or(static_cast<usint>(present.raft_self_id));
    request.centre = request.centre.value_or(present.self_center_id);
    return request;
}

captured change_settings(const raft_request& request) {
    configuration_text text;
    raft_request all = completed(request);
    kqcode_t code =
        arch_cfg_sys_update_raft_info(*all.heartbeat, *all.vote, *all.link_heartbeat,
                                      all.address->c_str(), *all.port, *all.id, *all.centre);
    return {code < 0 ? code : text.take_and_write(), ""};
}

}  // namespace

captured carry_out_raft(const raft_request& request) {
    switch (request.action) {
        case raft_action::add:
            return add(request, ARCH_TYPE_RAFT);
        case raft_action::learner:
            return add(request, ARCH_TYPE_LEARNER);
        case raft_action::remove:
            return remove(request);
        case raft_action::promote:
            return promote(request);
        case raft_action::replace:
            return replace(request);
        case raft_action::address:
            return change_address(request);
        case raft_action::settings:
            return change_settings(request);
        case raft_action::clear:
            return {arch_delete_raft_info(), ""};
        case raft_action::status:
            break;
    }
    return {0, ""};
}
