#include "support/raft_model.h"

#include <strings.h>

#include <algorithm>

namespace test_support {

bool same_name(const std::string& left, const std::string& right) {
    return strcasecmp(left.c_str(), right.c_str()) == 0;
}

bool is_writable(const std::string& text) {
    if (!text.empty() && (text.front() == ' ' || text.back() == ' ')) return false;
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return static_cast<unsigned char>(c) < 32 || c == 127; });
}

namespace {

bool same_address(const model_section& member, const std::string& ip, usint port) {
    return same_name(member.ip, ip) && member.port == port;
}

// The rules of a member that need no other.
kqcode_t check_values(const model_section& member, bool bp_mode) {
    if (!bp_mode && (member.ip.empty() || member.port == 0)) return ARCH_E_INVALID_VALUE;
    return member.id > 65534 || member.center > 65534 ? ARCH_E_INVALID_VALUE : 0;
}

std::string upper(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

std::string line(const char* key, const std::string& value) {
    return std::string(key) + " = " + value + "\n";
}

std::string line(const char* key, ulint value) {
    return line(key, std::to_string(value));
}

std::string line_unless(const char* key, ulint value, ulint unset) {
    return value == unset ? "" : line(key, value) + "\n";
}

std::string section_text(const model_section& section) {
    std::string text = "[" + section.name + "]\n";
    if (!section.is_member())
        return text + "ARCH_TYPE = LOCAL\nARCH_DEST = " + section.dest +
               "\nARCH_FILE_SIZE = 1024\nARCH_SPACE_LIMIT = 0\nARCH_FLUSH_BUF_SIZE = 0\n"
               "ARCH_HANG_FLAG = 1\n\n";
    text += line("ARCH_TYPE", section.type == ARCH_TYPE_RAFT ? "RAFT" : "LEARNER");
    text += line("ARCH_DEST", section.dest);
    if (!section.ip.empty()) text += line("ARCH_DEST_IP", section.ip);
    if (section.port != 0) text += line("ARCH_DEST_PORT", section.port);
    text += line("ARCH_DEST_ID", section.id);
    if (section.center != 0) text += line("ARCH_CENTER_ID", section.center);
    return text + "\n";
}

// A longer name is none of an instance.
std::string instance_of(const model_section& section) {
    bool is_name = section.is_member() && section.dest.size() <= ARCH_INST_NAME_MAX;
    return is_name ? upper(section.dest) : "";
}

bool same_record(const model_section& section, const arch_cfg_t& arch) {
    return arch.name == section.name && arch.type == section.type && arch.dest == section.dest &&
           arch.arch_dest_ip == section.ip && arch.arch_dest_port == section.port &&
           arch.arch_dest_id == section.id && arch.arch_center_id == section.center &&
           arch.n_inst == 1 && arch.dest_insts[0] == instance_of(section) && arch.hang_flag == 1 &&
           arch.status == 1 && arch.arch_failover == ARCH_UNSET_FLAG;
}

}  // namespace

ulint raft_model::count(ulint type) const {
    auto is_of_type = [type](const model_section& each) { return each.type == type; };
    return static_cast<ulint>(std::count_if(sections.begin(), sections.end(), is_of_type));
}

model_section* raft_model::find(const std::string& dest, bool members_only) {
    for (model_section& each : sections)
        if ((each.is_member() || !members_only) && same_name(each.dest, dest)) return &each;
    return nullptr;
}

kqcode_t raft_model::check_new(const std::string& name, const model_section& member) const {
    if (member.dest.size() > 128) return ARCH_E_TOO_LONG;
    if (same_name(member.dest, self)) return ARCH_E_DEST_IS_SELF;
    if (same_address(member, xmal_ip, xmal_port)) return ARCH_E_INVALID_VALUE;
    if (member.id == self_id) return ARCH_E_INVALID_VALUE;
    for (const model_section& each : sections) {
        if (same_name(each.name, name)) return ARCH_E_DUPLICATE_NAME;
        if (!each.is_member()) continue;
        if (same_name(each.dest, member.dest)) return ARCH_E_DEST_EXISTS;
        if (same_address(member, each.ip, each.port)) return ARCH_E_INVALID_VALUE;
        if (each.id == member.id) return ARCH_E_INVALID_VALUE;
    }
    return 0;
}

kqcode_t raft_model::add(const model_section& member) {
    if (!member.is_member()) return ARCH_E_INVALID_TYPE;
    if (member.type == ARCH_TYPE_LEARNER && count(ARCH_TYPE_LEARNER) > 8)
        return ARCH_E_TOO_MANY_LEARNER;
    if (member.type == ARCH_TYPE_RAFT && count(ARCH_TYPE_RAFT) > 7) return ARCH_E_TOO_MANY_RAFT;
    if (member.dest.size() > 120) return ARCH_E_TOO_LONG;
    if (member.dest.empty() || !is_writable(member.dest) ||
        member.dest.find('/') != std::string::npos ||
        member.dest.find("STANDBY_ARCHIVE") != std::string::npos || member.ip.size() > 64 ||
        !is_writable(member.ip))
        return ARCH_E_INVALID_VALUE;
    if (kqcode_t code = check_new("ARCHIVE_" + member.dest, member); code < 0) return code;
    if (kqcode_t code = check_values(member, bp_mode); code < 0) return code;
    sections.push_back(member);
    sections.back().name = "ARCHIVE_" + member.dest;
    return 0;
}

kqcode_t raft_model::check_member(const std::string& dest, ulint type) {
    if (dest.size() > 128) return ARCH_E_RAFT_DEST_TOO_LONG;
    if (same_name(dest, self)) return type == ARCH_TYPE_LEARNER ? ARCH_E_RAFT_TYPE_MISMATCH : 0;
    const model_section* found = find(dest, false);
    if (found == nullptr) return ARCH_E_DEST_NOT_FOUND;
    if (type == 0) return found->is_member() ? 0 : ARCH_E_NOT_RAFT_MEMBER;
    if (found->type == type) return 0;
    return type == ARCH_TYPE_LEARNER ? ARCH_E_NOT_LEARNER : ARCH_E_RAFT_TYPE_MISMATCH;
}

void raft_model::remove(ulint type, const std::string& dest) {
    auto found = std::find_if(sections.begin(), sections.end(), [&](const model_section& each) {
        return each.type == type && same_name(each.dest, dest);
    });
    if (found != sections.end()) sections.erase(found);
}

void raft_model::clear_settings() {
    raft_hb = raft_vote = pkg_interval = 0;
    xmal_hb = ARCH_UNSET_LONG;
    xmal_ip.clear();
    xmal_port = center = 0;
    self_id = ARCH_UNSET_SHORT;
}

kqcode_t raft_model::validate() {
    if (count(ARCH_TYPE_RAFT) > 0) {
        if (count(ARCH_TYPE_LOCAL) == 0) return ARCH_E_NO_LOCAL;
        if (!bp_mode && (xmal_ip.empty() || xmal_port == 0)) return ARCH_E_INVALID_VALUE;
        if (xmal_hb == ARCH_UNSET_LONG || raft_hb == 0 || raft_vote == ARCH_UNSET_LONG)
            return ARCH_E_INVALID_VALUE;
        if (raft_vote != 0 && raft_vote < 2 * raft_hb) return ARCH_E_INVALID_VALUE;
        if (self_id == ARCH_UNSET_SHORT) return ARCH_E_INVALID_VALUE;
    }
    if (count(ARCH_TYPE_LEARNER) > 9) return ARCH_E_TOO_MANY_LEARNER;
    if (count(ARCH_TYPE_LEARNER) > 0 && count(ARCH_TYPE_LOCAL) == 0) return ARCH_E_NO_LOCAL;
    std::vector<model_section> members;
    for (const model_section& each : sections) {
        if (!each.is_member()) continue;
        if (kqcode_t code = check_values(each, bp_mode); code < 0) return code;
        members.push_back(each);
        if (members.size() > 18) return ARCH_E_TOO_MANY_RAFT;
    }
    for (size_t i = 0; i < members.size(); i++) {
        for (size_t j = 0; j < i; j++)
            if (same_name(members[i].dest, members[j].dest) || members[i].id == members[j].id ||
                (!bp_mode && same_address(members[i], members[j].ip, members[j].port)))
                return ARCH_E_INVALID_VALUE;
        if (members[i].id == self_id || (!bp_mode && same_address(members[i], xmal_ip, xmal_port)))
            return ARCH_E_INVALID_VALUE;
    }
    if (wait_apply == ARCH_UNSET_FLAG) wait_apply = 0;
    return 0;
}

kqcode_t raft_model::start() {
    bool in_bounds =
        (xmal_hb == ARCH_UNSET_LONG || (xmal_hb >= 1 && xmal_hb <= 1800)) && raft_hb <= 1800 &&
        self_id <= ARCH_UNSET_SHORT && center <= 65534 &&
        (raft_vote == ARCH_UNSET_LONG || raft_vote == 0 || (raft_vote >= 2 && raft_vote <= 3600));
    if (!in_bounds) return ARCH_E_INVALID_VALUE;
    raft_model read = *this;
    for (auto each = read.sections.begin(); each != read.sections.end(); ++each) {
        for (auto before = read.sections.begin(); before != each; ++before)
            if (same_name(before->dest, each->dest)) return ARCH_E_DEST_EXISTS;
        if (!each->is_member()) continue;
        if (each->dest.size() > ARCH_INST_NAME_MAX) return ARCH_E_INVALID_DEST;
        each->dest = upper(each->dest);
    }
    if (read.raft_vote == 0) read.raft_vote = ARCH_UNSET_LONG;
    read.learner = 0;
    read.raft_cnt = static_cast<usint>(count(ARCH_TYPE_RAFT));
    if (kqcode_t code = read.validate(); code < 0) return code;
    *this = read;
    return 0;
}

std::string raft_model::text() const {
    std::string text = "#Velkor Database Archive Configuration file\n#this is comments\n\n";
    text.reserve(4096);
    text += line_unless("ARCH_WAIT_APPLY", wait_apply, ARCH_UNSET_FLAG);
    text += line_unless("XMAL_HB_INTERVAL", xmal_hb, ARCH_UNSET_LONG);
    text += line_unless("RAFT_HB_INTERVAL", raft_hb, 0);
    if (raft_vote != 0) text += line_unless("RAFT_VOTE_INTERVAL", raft_vote, ARCH_UNSET_LONG);
    if (!xmal_ip.empty()) text += line("XMAL_IP", xmal_ip) + "\n";
    text += line_unless("XMAL_PORT", xmal_port, 0);
    text += line_unless("RAFT_SELF_ID", self_id, ARCH_UNSET_SHORT);
    text += line_unless("RAFT_PKG_INTERVAL", pkg_interval, 0);
    text += line_unless("SELF_CENTER_ID", center, 0);
    for (const model_section& each : sections)
        text += section_text(each);
    return text;
}

std::string raft_model::difference() const {
    const arch_cfg_sys_t& sys = arch_cfg_sys;
    if (sys.wait_apply != wait_apply || sys.xmal_hb_interval != xmal_hb ||
        sys.raft_hb_interval != raft_hb || sys.raft_vote_interval != raft_vote ||
        sys.raft_self_id != self_id || sys.xmal_ip != xmal_ip || sys.xmal_port != xmal_port ||
        sys.self_center_id != center || sys.raft_pkg_interval != pkg_interval)
        return "the settings differ";
    if (arch_cfg_get_raft_cnt() != raft_cnt) return "raft_cnt differs";
    if (arch_cfg_check_self_is_learner() != learner) return "raft_learner differs";
    const arch_cfg_t* arch = sys.arch_lst.start;
    for (const model_section& each : sections) {
        if (arch == nullptr) return "a record is missing";
        if (!same_record(each, *arch)) return "record " + std::string(arch->name) + " differs";
        arch = arch->link.next;
    }
    return arch == nullptr ? "" : "there is a record too many";
}

}  // namespace test_support
