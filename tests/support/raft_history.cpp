#include "support/raft_history.h"

#include <ini.h>
#include <os.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <sstream>
#include <utility>

#include "support/instance.h"

namespace test_support {

namespace {

std::vector<std::string> split(const char* text) {
    std::istringstream stream(text);
    std::vector<std::string> pieces;
    for (std::string piece; std::getline(stream, piece, '|');)
        pieces.push_back(piece);
    return pieces;
}

const auto names = split(
    "N1|N2|N3|N4|N5|N6|N7|N8|N9|N10|N11|N12|N13|N14|N15|N16|N17|n3|n12|N18|N19|N20|N21|N22|me|a/b||"
    " x|arch1|x |x\n|x]=#|sixteen_letters_|seventeen_letters|STANDBY_ARCHIVE");
const auto addresses = split("h1|h2|h3|h4|H1|h5|h6|h7|h8|h9|| h|h |h\t");

std::string one_of(choices& from, const std::vector<std::string>& texts) {
    return texts[from.below(static_cast<ulint>(texts.size()))];
}

std::string some_name(choices& from) {
    ulint which = from.below(64);
    if (which < 3) return std::string(119 + which, 'L');
    return which == 3 ? std::string(129, 'L') : one_of(from, names);
}

std::string some_address(choices& from) {
    ulint which = from.below(64);
    return which < 2 ? std::string(64 + which, 'a') : one_of(from, addresses);
}

usint some_id(choices& from) {
    return from.below(32) == 0 ? usint{65535} : static_cast<usint>(from.below(48));
}

model_section some_member(choices& from) {
    model_section member;
    member.type = 7 + from.below(2);
    if (from.below(64) == 0) member.type = from.below(12);
    member.dest = some_name(from);
    member.ip = some_address(from);
    member.port = static_cast<usint>(from.below(24));
    member.id = some_id(from);
    member.center = from.below(16) == 0 ? usint{65535} : static_cast<usint>(from.below(3));
    return member;
}

std::vector<std::string> some_names(choices& from) {
    std::vector<std::string> list(from.below(6));
    for (std::string& each : list)
        each = some_name(from).substr(0, KQ_SYSNAME_MAX);
    return list;
}

// What a call leaves for its caller to persist.
schar rec[ARCH_CFG_TEXT_SIZE];

std::unique_ptr<sysname_t[]> array_of(const std::vector<std::string>& list) {
    auto array = std::make_unique<sysname_t[]>(list.size());
    for (size_t i = 0; i < list.size(); i++)
        memcpy(array[i], list[i].c_str(), list[i].size() + 1);
    return array;
}

void append(const model_section& section) {
    arch_cfg_t* arch = nullptr;
    arch_cfg_create(nullptr, section.name.c_str(), &arch);
    arch->type = static_cast<usint>(section.type);
    arch_cfg_set_dest(arch, section.dest.c_str());
    if (!section.is_member()) return;
    strcpy(arch->dest_insts[0], section.dest.c_str());
    strcpy(arch->arch_dest_ip, section.ip.c_str());
    arch->arch_dest_port = section.port;
    arch->arch_dest_id = section.id;
}

}  // namespace

raft_history::raft_history(bool bp_mode, bool on_disk) : on_disk(on_disk) {
    std::string storage = on_disk ? "" : "+DATA/";
    model.self = "ME";
    model.bp_mode = bp_mode;
    model.sections = {{"L1", ARCH_TYPE_LOCAL, storage + "arch1"},
                      {"S1", ARCH_TYPE_RAFT, "N1", "h1", 1, 1},
                      {"S2", ARCH_TYPE_LEARNER, "N2", "h2", 1, 2},
                      {"L2", ARCH_TYPE_LOCAL, storage + "arch2"},
                      {"S3", ARCH_TYPE_RAFT, "N3", "h3", 1, 3}};
    model.learner = 1;
    arch_cfg_sys_destroy();
    arch_cfg_sys_init_env();
    arch_cfg_sys.raft_learner = 1;
    for (const model_section& each : model.sections)
        append(each);
}

void raft_history::expect(const char* what, long long got, long long wanted) {
    if (got != wanted)
        fault =
            std::string(what) + " is " + std::to_string(got) + ", not " + std::to_string(wanted);
}

void raft_history::expect_text(bool failed) {
    std::string wanted = failed ? "" : model.text();
    if (rec != wanted) fault = "rec is\n" + std::string(rec) + "not\n" + wanted;
}

void raft_history::add(choices& from) {
    model_section member = some_member(from);
    described += " " + member.dest;
    arch_cfg_t* added = nullptr;
    kqcode_t code = arch_cfg_add_learner_or_raft(
        member.dest.c_str(), member.ip.empty() && from.below(2) ? nullptr : member.ip.c_str(),
        member.port, member.id, member.center, static_cast<usint>(member.type), &added, rec);
    expect("the code", code, model.add(member));
    expect_text(code < 0);
    if ((added != nullptr) != (code == 0)) fault = "the record and the code do not agree";
    if (added != nullptr && added != arch_cfg_sys.arch_lst.end) fault = "it is not the last record";
}

void raft_history::check_new(choices& from) {
    model_section member = some_member(from);
    std::string name =
        from.below(2) ? "ARCHIVE_" + some_name(from) : "s" + std::to_string(from.below(4));
    arch_cfg_hold lock;
    kqcode_t code = arch_cfg_validate_raft_info(name.c_str(), member.dest.c_str(),
                                                member.ip.c_str(), member.port, member.id);
    expect("the code", code, model.check_new(name, member));
}

void raft_history::change_address(choices& from) {
    std::string dest = some_name(from), ip = some_address(from);
    auto port = static_cast<usint>(from.below(24));
    arch_cfg_hold lock;
    expect("the code", arch_cfg_update_raft_info(dest.c_str(), ip.c_str(), port), 0);
    if (ip.size() > 64 || !is_writable(ip)) return;
    model_section* member = model.find(dest, true);
    if (same_name(dest, model.self)) {
        model.xmal_ip = ip;
        model.xmal_port = port;
    } else if (member != nullptr) {
        member->ip = ip;
        member->port = port;
    }
}

void raft_history::ask(choices& from) {
    std::string dest = some_name(from);
    ulint type = from.below(3) == 0 ? 0 : 7 + from.below(2);
    expect("the code", arch_cfg_check_raft_dest_validate(dest.c_str(), static_cast<usint>(type)),
           model.check_member(dest, type));
    const model_section* member = model.find(dest, true);
    bool is_self = same_name(dest, model.self);
    usint id = member != nullptr ? member->id : usint{ARCH_UNSET_SHORT};
    arch_cfg_hold lock;
    expect("the identifier", arch_cfg_find_dest_id_by_name(dest.c_str()),
           is_self ? static_cast<usint>(model.self_id) : id);
}

void raft_history::learner_leaves(choices& from) {
    std::string dest = some_name(from);
    expect("the code", arch_cfg_delete_learner(dest.c_str(), some_id(from), rec), 0);
    model.remove(ARCH_TYPE_LEARNER, dest);
    expect_text(false);
}

void raft_history::voter_leaves(choices& from) {
    std::string dest = some_name(from);
    expect("the code", arch_cfg_delete_raft(dest.c_str()), 0);
    model.remove(ARCH_TYPE_RAFT, dest);
}

void raft_history::change_to_new(choices& from) {
    std::vector<std::string> list = some_names(from);
    auto count = static_cast<usint>(list.size());
    kqcode_t code = arch_cfg_change_to_new(count, array_of(list).get(), rec);
    expect("the code", code, list.empty() ? ARCH_E_INVALID_VALUE : 0);
    if (!list.empty()) {
        std::erase_if(model.sections, [&](const model_section& each) {
            return each.type == ARCH_TYPE_RAFT &&
                   std::none_of(list.begin(), list.end(), [&](const std::string& name) {
                       return same_name(name, each.dest);
                   });
        });
        model.raft_cnt = static_cast<usint>(count - 1);
    }
    expect_text(list.empty());
}

void raft_history::promote(choices& from) {
    std::vector<std::string> list = some_names(from);
    std::vector<usint> ids(list.size() + 1), wanted;
    usint promoted = 77;
    kqcode_t code = arch_cfg_change_learner_to_raft(
        static_cast<usint>(list.size()), array_of(list).get(), rec, &promoted, ids.data());
    kqcode_t expected = 0;
    for (const std::string& name : list) {
        model_section* found = model.find(name, false);
        if (same_name(name, model.self)) {
            model.learner = 0;
        } else if (found == nullptr) {
            expected = ARCH_E_DEST_NOT_FOUND;
            break;
        } else if (found->type == ARCH_TYPE_LEARNER) {
            found->type = ARCH_TYPE_RAFT;
            wanted.push_back(found->id);
        }
    }
    expect("the code", code, expected);
    ids.resize(promoted);
    if (ids != wanted) fault = "the identifiers of the promoted differ";
    expect_text(code < 0);
}

void raft_history::count_voters(choices&) {
    arch_cfg_set_raft_cnt();
    model.raft_cnt = static_cast<usint>(model.count(ARCH_TYPE_RAFT));
}

void raft_history::clear_settings(choices&) {
    expect("the code", arch_cfg_sys_delete_raft_info(), 0);
    model.clear_settings();
}

void raft_history::end_group(choices& from) {
    if (from.below(8) != 0) return clear_settings(from);
    expect("the code", arch_delete_raft_info(), on_disk ? 0 : ARCH_E_FILE_OPEN);
    std::erase_if(model.sections, [](const model_section& each) { return each.is_member(); });
    model.clear_settings();
    model.raft_cnt = 0;
    if (on_disk && read_file("kqarch.ini") != model.text()) fault = "the file differs";
}

void raft_history::replace_settings(choices& from) {
    static const ulint intervals[] = {10, 20, 5, 1800, 0, 1, 3600, 1801, 0x80000000, 0xFFFFFFFF};
    ulint hb = intervals[from.below(from.below(4) == 0 ? 10 : 3)];
    ulint vote = intervals[from.below(from.below(4) == 0 ? 10 : 2)];
    ulint xmal_hb = intervals[from.below(from.below(4) == 0 ? 10 : 3)];
    std::string ip = some_address(from);
    auto port = static_cast<usint>(from.below(24));
    ulint id = some_id(from) + (from.below(16) == 0 ? 0x10000 : 0);
    ulint center = from.below(4) == 0 ? 0x1FFFF - from.below(2) : from.below(3);
    kqcode_t code = arch_cfg_sys_update_raft_info(hb, vote, xmal_hb, ip.c_str(), port, id, center);
    if (!is_writable(ip)) return expect("the code", code, ARCH_E_INVALID_VALUE);
    model.raft_hb = hb;
    model.raft_vote = vote;
    model.xmal_hb = xmal_hb;
    model.xmal_ip = ip.substr(0, 64);
    model.xmal_port = port;
    model.self_id = id;
    model.center = static_cast<usint>(center);
    kqcode_t expected = model.validate();
    if (expected < 0) model.clear_settings();
    expect("the code", code, expected);
}

void raft_history::set_vote_interval(choices& from) {
    ulint interval = from.below(8) == 0 ? ARCH_UNSET_LONG : from.below(4) * 15;
    arch_cfg_sys_set_raft_vote_interval(interval);
    model.raft_vote = interval;
}

std::string raft_history::step(choices& from) {
    static const struct {
        const char* name;
        operation perform;
    } operations[] = {
        {"add", &raft_history::add},
        {"add", &raft_history::add},
        {"add", &raft_history::add},
        {"add", &raft_history::add},
        {"check", &raft_history::check_new},
        {"change address", &raft_history::change_address},
        {"ask", &raft_history::ask},
        {"learner leaves", &raft_history::learner_leaves},
        {"voter leaves", &raft_history::voter_leaves},
        {"change to new", &raft_history::change_to_new},
        {"promote", &raft_history::promote},
        {"promote", &raft_history::promote},
        {"count voters", &raft_history::count_voters},
        {"end group", &raft_history::end_group},
        {"replace settings", &raft_history::replace_settings},
        {"replace settings", &raft_history::replace_settings},
        {"set vote interval", &raft_history::set_vote_interval},
    };
    const auto& chosen = operations[from.below(std::size(operations))];
    described = chosen.name;
    fault.clear();
    memset(rec, 'x', 16);
    (this->*chosen.perform)(from);
    arch_cfg_hold lock;
    if (fault.empty()) fault = model.difference();
    if (fault.empty()) fault = list_fault(arch_cfg_sys);
    return fault.empty() ? "" : described + ": " + fault;
}

std::string raft_history::restart(bool go_on) {
    raft_model read = model;
    kqcode_t expected = read.start();
    write_file("started.ini", model.text());
    arch_cfg_sys_t before = arch_cfg_sys;
    kqcode_t code = arch_cfg_sys_init("started.ini", 1, 1);
    if (code != expected)
        return "start-up's code is " + std::to_string(code) + ", not " + std::to_string(expected) +
               " for\n" + model.text();
    std::string differs = code == 0 ? read.difference() : "";
    arch_cfg_lst_t unused = before.arch_lst;
    if (code == 0) restarts_accepted++;
    if (code == 0 && go_on) {
        model = read;
    } else {
        if (code == 0) arch_cfg_sys_destroy();
        arch_cfg_sys_init_env();
        os_mutex_t mutex = arch_cfg_sys.mutex;
        arch_cfg_sys = before;
        arch_cfg_sys.mutex = mutex;
        unused = {};
    }
    for (arch_cfg_t* arch = unused.start; arch != nullptr;)
        os_free(std::exchange(arch, arch->link.next));
    return differs.empty() ? "" : "after start-up: " + differs;
}

}  // namespace test_support
