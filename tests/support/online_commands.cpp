// Commands that change a running registry: a clause, the adders, the check of a change, dropping,
// and writing the file and its backups.
#include <sys/stat.h>

#include <cstring>
#include <set>
#include <stdexcept>

#include "support/binding.h"
#include "support/fields.h"

namespace test_support {

namespace fs = std::filesystem;

namespace {

using context = command_context;

schar* data_of(std::string& text) {
    return text == "null" ? nullptr : text.data();
}

// Sets the fields that the arguments from the third on name; those of the command itself stay out.
void set_fields(const context& call, arch_cfg_t& record) {
    static const std::set<std::string> own = {"path", "inst_name", "sys_mode", "bits", "dest_org"};
    for (size_t i = 2; i < call.arguments.size(); i++)
        if (const std::string& each = call.argument(i);
            own.count(each.substr(0, each.find('='))) == 0)
            set_field(record_fields(), record, each);
}

// What arch_cfg_parse_sql fills, each part with guard bytes behind it.
struct parsed {
    arch_cfg_t record;
    schar behind_record[64];
    schar dest[ARCH_CLAUSE_DEST_MAX + 1];
    schar behind_dest[64];
    usint bits = 0;
    ulint vote_interval = 1;

    parsed() {
        memset(static_cast<void*>(&record), guard, sizeof record + sizeof behind_record);
        memset(dest, guard, sizeof dest + sizeof behind_dest);
    }
    kqcode_t parse(schar* clause) {
        return arch_cfg_parse_sql(clause, &record, dest, &bits, &vote_interval);
    }
    bool has_dest() const { return dest[0] != guard; }
    std::string fault() const {
        std::string whole(64, guard);
        if (std::string(behind_record, 64) != whole) return "\nit wrote behind the record";
        return std::string(behind_dest, 64) == whole ? "" : "\nit wrote behind dest_org";
    }
    static constexpr schar guard = 0x7f;
};

std::string hex(ulint number) {
    char text[16];
    snprintf(text, sizeof text, "0x%03x", number);
    return text;
}

// clause TEXT [bits=N]: the code, the bits, and what else was filled. The bits are N before.
std::string clause(const context& call) {
    parsed result;
    result.bits = static_cast<usint>(call.option("bits", 0));
    std::string copy = call.argument(0);
    kqcode_t code = result.parse(call.text(0) ? copy.data() : nullptr);
    std::string text = code_text(code) + ", bits " + hex(result.bits);
    if (result.has_dest()) text += " dest_org=(" + std::string(result.dest) + ")";
    if (result.vote_interval != ARCH_UNSET_LONG)
        text += " vote=" + std::to_string(result.vote_interval);
    if (result.record.name[0] != '\0') text += " name=" + std::string(result.record.name);
    return text + differences(record_fields(), result.record) + result.fault();
}

// Parses the clause of a command that works on its result.
void parse_well(const context& call, size_t index, parsed& result) {
    std::string copy = call.argument(index);
    kqcode_t code = result.parse(copy.data());
    if (code != 0 && !copy.empty()) throw std::runtime_error("the clause is no good");
    if (!result.has_dest()) result.dest[0] = '\0';
}

using adder_function = kqcode_t (*)(const context&, arch_cfg_t&, schar* path, schar* instance,
                                    arch_cfg_t**);

struct adder {
    const char* name;
    usint type;
    bool takes_list;
    adder_function add;
};

template <auto Adder>
kqcode_t add_record(const context&, arch_cfg_t& record, schar*, schar*, arch_cfg_t** out) {
    return Adder(&record, out);
}

const adder adders[] = {
    {"march", ARCH_TYPE_REALTIME, true, add_record<arch_cfg_add_march>},
    {"timely", ARCH_TYPE_TIMELY, true, add_record<arch_cfg_add_timely>},
    {"timer", ARCH_TYPE_ASYNC, true, add_record<arch_cfg_add_timer>},
    {"sync", ARCH_TYPE_SYNC, true,
     [](const context& call, arch_cfg_t& record, schar*, schar*, arch_cfg_t** out) {
         return arch_cfg_add_sync(&record, call.option("sys_mode", 0), out);
     }},
    {"subscribe", ARCH_TYPE_SUBSCRIBE, false,
     [](const context&, arch_cfg_t& record, schar* path, schar*, arch_cfg_t** out) {
         return arch_cfg_add_subscribe(&record, path, out);
     }},
    {"local", ARCH_TYPE_LOCAL, false,
     [](const context&, arch_cfg_t& record, schar* path, schar*, arch_cfg_t** out) {
         return arch_cfg_add_local(path, record.space_limit, static_cast<usint>(record.file_size),
                                   record.hang_flag, record.flush_buf_size, out);
     }},
    {"remote", ARCH_TYPE_REMOTE, false,
     [](const context&, arch_cfg_t& record, schar* path, schar* instance, arch_cfg_t** out) {
         return arch_cfg_add_remote(path, instance, record.space_limit,
                                    static_cast<usint>(record.file_size), record.hang_flag,
                                    record.flush_buf_size, out);
     }},
};

const adder& adder_of(const std::string& name) {
    for (const adder& each : adders)
        if (name == each.name) return each;
    throw std::runtime_error("no adder " + name);
}

// As a server does before it adds: the type, and the instances of the list of DEST.
void prepare(const adder& chosen, parsed& asked) {
    asked.record.type = chosen.type;
    if (!chosen.takes_list || asked.dest[0] == '\0') return;
    arch_cfg_sys_t empty{};
    kqcode_t code = arch_cfg_inst_dests_validate(&empty, &asked.record, asked.dest);
    if (code != 0) throw std::runtime_error("the instance list is no good");
}

std::string returned(const arch_cfg_t* out, const arch_cfg_t* before) {
    if (out == before) return ", pointer not written";
    if (out == nullptr) return ", null";
    bool last = out == arch_cfg_sys.arch_lst.end;
    return ", " + std::string(out->name) + (last ? "" : " which is not the last");
}

// add ADDER CLAUSE [FIELD=VALUE...]: the code, the returned record, and what the call changed of
// the texts and the record that it was handed. A field is set after the clause and the list were
// taken over; path= and inst_name= stand for the texts, sys_mode= for the argument of that name. Where none is
// set, start-up must read what was written.
std::string add(const context& call) {
    const adder& chosen = adder_of(call.argument(0));
    parsed asked;
    parse_well(call, 1, asked);
    prepare(chosen, asked);
    set_fields(call, asked.record);
    bool is_remote = chosen.type == ARCH_TYPE_REMOTE;
    std::string path =
        call.option("path").value_or(is_remote ? asked.record.timer_name : asked.dest);
    std::string instance = call.option("inst_name").value_or(is_remote ? asked.dest : "");
    arch_cfg_t before = asked.record, untouched;
    std::string path_before = path, instance_before = instance;
    arch_cfg_t* out = &untouched;
    kqcode_t code = chosen.add(call, asked.record, data_of(path), data_of(instance), &out);
    std::string text = code_text(code) + returned(out, &untouched);
    bool named = out != nullptr && out != &untouched && strcmp(out->name, asked.record.name) == 0;
    if (asked.record.name[0] != '\0' && !named)
        text += ", record named " + std::string(asked.record.name);
    text += differences(record_fields(), asked.record, &before);
    if (path.c_str() != path_before) text += " path=(" + std::string(path.c_str()) + ")";
    if (instance.c_str() != instance_before)
        text += " inst_name=(" + std::string(instance.c_str()) + ")";
    bool is_plain = code == 0 && call.arguments.size() == 2;
    return text + asked.fault() + (is_plain ? fault_of_start_up(call) : "");
}

bool same_bytes(const arch_cfg_t& left, const arch_cfg_t& right) {
    return memcmp(static_cast<const void*>(&left), &right, sizeof left) == 0;
}

// modify SECTION CLAUSE [FIELD=VALUE...]: the code, and what the check filled into the new record
// and into DEST. A clause without TYPE keeps the stored one.
std::string modify(const context& call) {
    const arch_cfg_t* stored = find_record(arch_cfg_sys, call.argument(0));
    if (stored == nullptr) throw std::runtime_error("no record " + call.argument(0));
    parsed asked;
    parse_well(call, 1, asked);
    if (asked.record.type == ARCH_TYPE_NONE) asked.record.type = stored->type;
    set_fields(call, asked.record);
    usint bits = static_cast<usint>(call.option("bits", asked.bits));
    if (auto dest = call.option("dest_org"))
        snprintf(asked.dest, sizeof asked.dest, "%s", dest->c_str());
    arch_cfg_t before = asked.record, stored_before = *stored;
    std::string dest_before = asked.dest;
    arch_cfg_hold lock;
    ulint count = arch_cfg_sys.arch_lst.count;
    std::string text =
        code_text(arch_cfg_validate_for_modify(&asked.record, stored, bits, asked.dest));
    text += differences(record_fields(), asked.record, &before);
    if (asked.dest != dest_before) text += " dest_org=(" + std::string(asked.dest) + ")";
    if (!same_bytes(*stored, stored_before) || count != arch_cfg_sys.arch_lst.count)
        text += "\nthe registry was changed";
    return text + asked.fault();
}

std::string modify_nothing(const context& call) {
    arch_cfg_hold lock;
    return code_text(arch_cfg_validate_for_modify(
        nullptr, find_record(arch_cfg_sys, call.argument(0)), 0xFFFF, nullptr));
}

std::string drop(const context& call) {
    kqcode_t code = arch_cfg_drop(call.text(0));
    return code_text(code) + (code == 0 ? fault_of_start_up(call) : "");
}

// drop-low SECTION, or stranger for a record that is not registered, or null.
std::string drop_low(const context& call) {
    if (call.argument(0) == "null") return code_text(arch_cfg_drop_low(nullptr));
    if (arch_cfg_t* found = find_record(arch_cfg_sys, call.argument(0)))
        return code_text(arch_cfg_drop_low(found));
    if (call.argument(0) != "stranger") throw std::runtime_error("no such record");
    arch_cfg_t stranger = arch_cfg_sys.arch_lst.start ? *arch_cfg_sys.arch_lst.start : arch_cfg_t{};
    arch_cfg_t before = stranger;
    kqcode_t code = arch_cfg_drop_low(&stranger);
    return code_text(code) + (same_bytes(stranger, before) ? "" : ", the record was changed");
}

// write-by-rec WITH_ENTER [null]: writes the input; the lock is held here unless WITH_ENTER is 1.
std::string write_by_rec(const context& call) {
    const schar* text = call.arguments.size() > 1 ? nullptr : call.input.c_str();
    if (call.number(0) == 1) return code_text(arch_cfg_sys_write_by_rec(text, 1));
    arch_cfg_hold lock;
    return code_text(arch_cfg_sys_write_by_rec(text, call.number(0)));
}

// files [DIRECTORY]: what a directory holds, each with its mode; of the instance's directory not
// the configuration of its siblings.
std::string files(const context& call) {
    static const std::set<std::string> siblings = {"kq.ini", "kqmal.ini", "kqtimer.ini"};
    std::set<std::string> lines;
    for (const auto& entry :
         fs::directory_iterator(call.arguments.empty() ? "." : call.argument(0))) {
        std::string name = entry.path().filename();
        if (siblings.count(name) > 0) continue;
        std::string kind = entry.is_symlink() ? " link" : " " + mode_text(entry.path());
        lines.insert(name + (entry.is_symlink() || entry.is_regular_file() ? kind : "/"));
    }
    std::string text;
    for (const std::string& each : lines)
        text += (text.empty() ? "" : ", ") + each;
    return text.empty() ? "none" : text;
}

// chmod PATH MODE: the mode in octal.
std::string change_mode(const context& call) {
    fs::permissions(call.argument(0),
                    static_cast<fs::perms>(std::stoi(call.argument(1), nullptr, 8)));
    return "ok";
}

}  // namespace

const command_table& online_commands() {
    static const command_table table = {
        {"clause", clause},
        {"add", add},
        {"modify", modify},
        {"modify-nothing", modify_nothing},
        {"drop", drop},
        {"drop-low", drop_low},
        {"write-file", bound_locked<arch_cfg_sys_write_to_file>},
        {"write-by-rec", write_by_rec},
        {"backup", bound<arch_file_gen_bak>},
        {"delete-backup", bound<arch_file_delete_bak>},
        {"files", files},
        {"fifo", [](const context& call) { return code_text(mkfifo(call.text(0), 0600)); }},
        {"chmod", change_mode},
    };
    return table;
}

}  // namespace test_support
