// Any bytes as archive clauses, one after another, NUL between them: what parses is prepared as a
// server does it and added to a registry that has a LOCAL. After each destination that is added,
// kqarch.ini holds the sections of the registry with the keys of their types and no other line, and
// reading it gives the same text again, or is refused because a name is in use.
#include <arch_cfg.h>
#include <ini.h>
#include <osfile.h>
#include <stdint.h>

#include <cstring>
#include <iostream>
#include <sstream>

#include "support/online.h"

namespace {

using namespace test_support;

void require(bool holds, const std::string& what) {
    if (holds) return;
    std::cerr << what << "\nin\n" << read_file("kqarch.ini");
    __builtin_trap();
}

struct server {
    online_instance instance;

    server() {
        os_set_dry_run(1);
        require(start_from("[L]\nARCH_TYPE = LOCAL\nARCH_DEST = arch1\n") == 0, "start-up");
        archiving(false);
    }

    // Names of instances are anything while archiving is off; start-up needs it on.
    static void archiving(bool on) { ini_set_value(ini_index_arch_flag, on ? 1 : 0); }

    static void forget() {
        while (arch_cfg_sys.arch_lst.count > 1)
            arch_cfg_destroy_for_drs(arch_cfg_sys.arch_lst.end);
    }
};

kqcode_t add(arch_cfg_t& asked, schar* dest, arch_cfg_t** added) {
    usint size = static_cast<usint>(asked.file_size);
    switch (asked.type) {
        case ARCH_TYPE_LOCAL:
            return arch_cfg_add_local(dest, asked.space_limit, size, asked.hang_flag,
                                      asked.flush_buf_size, added);
        case ARCH_TYPE_REMOTE:
            return arch_cfg_add_remote(asked.timer_name, dest, asked.space_limit, size,
                                       asked.hang_flag, asked.flush_buf_size, added);
        case ARCH_TYPE_SUBSCRIBE:
            return arch_cfg_add_subscribe(&asked, dest, added);
        case ARCH_TYPE_REALTIME:
            return arch_cfg_add_march(&asked, added);
        case ARCH_TYPE_SYNC:
            return arch_cfg_add_sync(&asked, 0, added);
        case ARCH_TYPE_ASYNC:
            return arch_cfg_add_timer(&asked, added);
        case ARCH_TYPE_TIMELY:
            return arch_cfg_add_timely(&asked, added);
        default:
            return ARCH_E_INVALID_TYPE;
    }
}

const char* keys_of(const arch_cfg_t& arch) {
    switch (arch.type) {
        case ARCH_TYPE_LOCAL:
            return "ARCH_TYPE ARCH_DEST ARCH_FILE_SIZE ARCH_SPACE_LIMIT ARCH_FLUSH_BUF_SIZE "
                   "ARCH_HANG_FLAG ";
        case ARCH_TYPE_REMOTE:
            return "ARCH_TYPE ARCH_DEST ARCH_INCOMING_PATH ARCH_FILE_SIZE ARCH_SPACE_LIMIT "
                   "ARCH_FLUSH_BUF_SIZE ";
        case ARCH_TYPE_SUBSCRIBE:
            return "ARCH_TYPE ARCH_SUBSCRIBE_MODE ARCH_DEST ARCH_TIMER_NAME "
                   "ARCH_THRESHOLD_PER_SECOND ARCH_SEND_DELAY ";
        case ARCH_TYPE_SYNC:
            return "ARCH_TYPE ARCH_DEST ARCH_RECOVER_TIME ";
        case ARCH_TYPE_ASYNC:
            return "ARCH_TYPE ARCH_DEST ARCH_TIMER_NAME ARCH_SEND_DELAY ";
        default:
            return "ARCH_TYPE ARCH_DEST WAIT_APPLY ARCH_FAILOVER ";
    }
}

// The sections and their keys, in order, as the registry has them and as a file's lines are.
std::string expected_lines() {
    std::string lines = "ARCH_WAIT_APPLY ";
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        lines += "[" + std::string(arch->name) + "] " + keys_of(*arch);
    return lines;
}

std::string lines_of(const std::string& text) {
    std::istringstream stream(text);
    std::string lines;
    for (std::string line; std::getline(stream, line);)
        if (!line.empty() && line[0] != '#')
            lines += line.substr(0, line[0] == '[' ? line.size() : line.find(" =")) + " ";
    return lines;
}

void check_added() {
    std::string text = read_file("kqarch.ini");
    require(list_fault(arch_cfg_sys).empty(), list_fault(arch_cfg_sys));
    require(text == registry_text(), "the file is not the registry's text");
    require(lines_of(text) == expected_lines(), lines_of(text) + "\n" + expected_lines());
    server::archiving(true);
    kqcode_t code = start_up_aside(
        0, [&text] { require(registry_text() == text, "read back:\n" + registry_text()); });
    server::archiving(false);
    require(code == 0 || code == ARCH_E_DEST_EXISTS, "start-up: " + std::to_string(code));
}

// Parses, prepares and adds one clause.
void try_clause(schar* clause) {
    arch_cfg_t asked, *added = nullptr;
    schar dest[ARCH_CLAUSE_DEST_MAX + 1] = "";
    usint bits = 0;
    ulint vote_interval = 0;
    if (arch_cfg_parse_sql(clause, &asked, dest, &bits, &vote_interval) != 0) return;
    arch_cfg_sys_t empty{};
    bool takes_list = asked.type >= ARCH_TYPE_REALTIME && asked.type <= ARCH_TYPE_TIMELY;
    if (takes_list && arch_cfg_inst_dests_validate(&empty, &asked, dest) != 0) return;
    std::string before = registry_text();
    kqcode_t code = add(asked, dest, &added);
    require(code == 0 || added == nullptr, "returned, and refused");
    if (code == 0)
        check_added();
    else
        require(registry_text() == before, "a refusal changed the registry");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static server running;
    std::string clauses(reinterpret_cast<const char*>(data), size);
    for (size_t at = 0; at <= clauses.size(); at += strlen(clauses.c_str() + at) + 1) {
        std::string clause = clauses.c_str() + at;
        try_clause(clause.data());
    }
    running.forget();
    return 0;
}
