// Operations on a registry in any order, each compared with a list of what it ought to hold: adds,
// drops, look-ups, and what a server changes in a record itself. kqarch.ini cannot be written, so
// that nothing waits for a disk; what is added or dropped stays so.
#include <ini.h>
#include <stdio.h>
#include <strings.h>

#include <algorithm>
#include <cstring>

#include "file_server.h"
#include "support/raft_history.h"

using namespace test_support;

namespace {

using texts = std::vector<std::string>;

struct entry {
    arch_cfg_t* record;
    std::string name;
    ulint type = ARCH_TYPE_NONE;
    std::string dest = "", remote = "";
    texts instances = {""};

    // What the record now says of itself.
    void take() {
        type = record->type;
        dest = record->dest;
        remote = record->timer_name;
        instances.assign(record->dest_insts, record->dest_insts + record->n_inst);
    }

    bool answers_to(const std::string& text) const {
        auto is_text = [&](const std::string& each) { return same_name(each, text); };
        if (type == ARCH_TYPE_REMOTE) return is_text(remote);
        if (type >= ARCH_TYPE_REALTIME && type <= ARCH_TYPE_TIMELY)
            return std::any_of(instances.begin(), instances.end(), is_text);
        return (type == ARCH_TYPE_LOCAL || type == ARCH_TYPE_RAFT || type == ARCH_TYPE_LEARNER) &&
               is_text(dest);
    }
};

std::vector<entry> model;

bool any(ulint type) {
    return std::any_of(model.begin(), model.end(), [=](auto& each) { return each.type == type; });
}

long count(ulint type) {
    return std::count_if(model.begin(), model.end(), [=](auto& each) { return each.type == type; });
}

arch_cfg_t* named(const std::string& text) {
    for (const entry& each : model)
        if (same_name(each.name, text)) return each.record;
    return nullptr;
}

arch_cfg_t* found(const std::string& text) {
    for (const entry& each : model)
        if (each.answers_to(text)) return each.record;
    return nullptr;
}

arch_cfg_t* found_by_list(const std::string& list) {
    arch_cfg_t* record = found(list);
    bool searched = std::count(list.begin(), list.end(), '/') < ARCH_INST_MAX;
    for (size_t at = 0; searched && record == nullptr && at <= list.size();) {
        std::string piece = list.substr(at, list.find('/', at) - at);
        if (!piece.empty()) record = found(piece);
        at += piece.size() + 1;
    }
    return record;
}

void forget(const arch_cfg_t* record) {
    std::erase_if(model, [=](const entry& each) { return each.record == record; });
}

// ---- What operations choose from ----

const char* const words[] = {"I1", "i1", "I2", "I3", "I4", "I5", "a", "A", "b", "/x", "a/b", ""};
const char* const sections[] = {"S1",
                                "s1",
                                "S2",
                                "S3",
                                "ARCHIVE_LOCAL7",
                                "archive_local8",
                                "xARCHIVE_LOCAL09",
                                "ARCHIVE_SYNC2147483647",
                                "ARCHIVE_ASYNC1x"};

std::string word(choices& from) {
    return words[from.below(std::size(words))];
}

std::string list(choices& from) {
    std::string text = word(from);
    for (ulint left = from.below(4) == 0 ? from.below(18) : from.below(3); left > 0; left--)
        text += "/" + word(from);
    return text;
}

entry* chosen(choices& from) {
    return model.empty() ? nullptr : &model[from.below(static_cast<ulint>(model.size()))];
}

template <size_t Size>
void set_text(schar (&field)[Size], const std::string& text) {
    field[text.copy(field, Size - 1)] = '\0';
}

// ---- The operations ----

void create(choices& from) {
    std::string name = sections[from.below(std::size(sections))];
    arch_cfg_t* record = nullptr;
    kqcode_t code = arch_cfg_create(nullptr, name.c_str(), &record);
    demand(code == (named(name) != nullptr ? ARCH_E_DUPLICATE_NAME : 0), "create: the code");
    if (code == 0) model.push_back({record, name});
}

void set_instances(arch_cfg_t& record, choices& from) {
    record.n_inst = static_cast<byte>(from.below(4));
    for (int i = 0; i < record.n_inst; i++)
        set_text(record.dest_insts[i], word(from));
}

// As the server does for a change that was checked.
void change(choices& from) {
    entry* each = chosen(from);
    if (each == nullptr) return;
    arch_cfg_hold lock;
    arch_cfg_t& record = *each->record;
    record.type = static_cast<usint>(from.below(11));
    arch_cfg_set_dest(&record, word(from).c_str());
    set_text(record.timer_name, word(from));
    set_instances(record, from);
    each->take();
}

// As the reader of the file does. What a refused list leaves in the record is taken as it is.
void set_key(choices& from) {
    static const char* const keys[] = {"ARCH_DEST", "ARCH_DEST", "ARCH_TYPE", "ARCH_INCOMING_PATH",
                                       "ARCH_TIMER_NAME"};
    entry* each = chosen(from);
    if (each == nullptr) return;
    const char* key = keys[from.below(std::size(keys))];
    std::string value = key[6] == 'Y' ? arch_cfg_get_arch_name_by_type(from.below(10)) : list(from);
    arch_cfg_add_value(nullptr, each->record, key, value.data());
    each->take();
}

void name_next(choices& from) {
    ulint type = from.below(10), highest = 0;
    schar name[KQ_SYSNAME_MAX + 1] = "unnamed";
    const schar* prefix = arch_cfg_name_pre[type];
    for (const entry& each : model) {
        size_t at = prefix != nullptr ? each.name.find(prefix) : std::string::npos;
        if (at == std::string::npos) continue;
        std::string digits = each.name.substr(at + strlen(prefix));
        if (ini_is_integer(digits.c_str())) highest = std::max(highest, ulint(std::stoul(digits)));
    }
    arch_cfg_hold lock;
    arch_cfg_get_name(type, name);
    demand(name == (prefix ? prefix + std::to_string(lint(highest + 1)) : "unnamed"), "next name");
}

kqcode_t verdict_of_standby(ulint type, const arch_cfg_t& asked) {
    static const kqcode_t too_many[] = {0,
                                        0,
                                        ARCH_E_TOO_MANY_REALTIME,
                                        ARCH_E_TOO_MANY_SYNC,
                                        ARCH_E_TOO_MANY_ASYNC,
                                        ARCH_E_TOO_MANY_TIMELY};
    if (any(ARCH_TYPE_SYNC) && asked.n_inst > 1) return ARCH_E_SYNC_CONFLICT;
    if (!any(ARCH_TYPE_LOCAL)) return ARCH_E_NO_LOCAL;
    if (type == ARCH_TYPE_REALTIME && any(ARCH_TYPE_TIMELY)) return ARCH_E_REALTIME_TIMELY_CONFLICT;
    if (type == ARCH_TYPE_TIMELY && any(ARCH_TYPE_REALTIME)) return ARCH_E_REALTIME_TIMELY_CONFLICT;
    if (any(ARCH_TYPE_SUBSCRIBE)) return ARCH_E_SUBSCRIBE_CONFLICT;
    if (count(type) >= 8) return too_many[type];
    return ARCH_E_FILE_OPEN;
}

void add(choices& from) {
    static const struct {
        ulint type;
        kqcode_t (*add)(arch_cfg_t*, arch_cfg_t**);
    } adders[] = {{ARCH_TYPE_REALTIME, arch_cfg_add_march},
                  {ARCH_TYPE_TIMELY, arch_cfg_add_timely},
                  {ARCH_TYPE_ASYNC, arch_cfg_add_timer}};
    const auto& adder = adders[from.below(3)];
    arch_cfg_t asked, *added = nullptr;
    arch_init(&asked, "");
    asked.type = static_cast<usint>(adder.type);
    set_text(asked.timer_name, "T1");
    asked.n_inst = static_cast<byte>(1 + from.below(3));
    for (int i = 0; i < asked.n_inst; i++)
        set_text(asked.dest_insts[i], words[from.below(9)]);
    set_text(asked.dest, asked.dest_insts[0]);
    kqcode_t code = adder.add(&asked, &added);
    demand(code == verdict_of_standby(adder.type, asked), "add: the code");
    demand((added != nullptr) == (code == ARCH_E_FILE_OPEN), "add: the record");
    if (added == nullptr) return;
    demand(named(asked.name) == nullptr, "add: a name in use");
    model.push_back({added, asked.name});
    model.back().take();
    demand(added->type == adder.type && added->n_inst == asked.n_inst, "add: another record");
}

void drop(choices& from) {
    entry* each = chosen(from);
    std::string text = list(from);
    arch_cfg_t* record = text.empty() ? nullptr : found_by_list(text);
    if (each == nullptr || from.below(2) == 0) {
        kqcode_t code = arch_cfg_drop(text.c_str());
        demand(code == (record ? ARCH_E_FILE_OPEN : ARCH_E_DEST_NOT_FOUND), "drop: the code");
    } else {
        record = each->record;
        demand(arch_cfg_drop_low(record) == ARCH_E_FILE_OPEN, "drop: the record's code");
        demand(arch_cfg_drop_low(record) == ARCH_E_DEST_NOT_FOUND, "drop: dropped before");
    }
    forget(record);
}

void look_up(choices& from) {
    std::string text = list(from);
    demand(arch_cfg_find_by_dest_low(text.c_str()) == found(text), "look-up: a text");
    demand(arch_cfg_find_by_dest(text.c_str(), 0) == found_by_list(text), "look-up: a list");
}

void count_types(choices& from) {
    ulint type = from.below(10);
    arch_cfg_hold lock;
    demand(arch_cfg_get_cnt_by_type(type) == count(type), "count: of a type");
}

void check() {
    arch_cfg_hold lock;
    demand(arch_cfg_sys.arch_lst.count == model.size(), "the count is another");
    const arch_cfg_t* record = arch_cfg_sys.arch_lst.start;
    for (const entry& each : model) {
        bool same = record == each.record && record->name == each.name &&
                    record->type == each.type && record->dest == each.dest;
        demand(same, "a record is another");
        record = record->link.next;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static file_server running;
    static void (*const operations[])(choices&) = {
        create, create, change, set_key, add, add, drop, look_up, look_up, name_next, count_types};
    ini_set_value(ini_index_arch_flag, 0);
    set_text(global_ini_info.config_path, "nowhere");
    arch_cfg_sys_destroy();
    arch_cfg_sys_init_env();
    model.clear();
    for (choices from(data, size); !from.used_up(); check())
        operations[from.below(std::size(operations))](from);
    demand(list_fault(arch_cfg_sys).empty(), "the list is not sound");
    return 0;
}
