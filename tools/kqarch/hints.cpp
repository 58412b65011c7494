#include "hints.h"

#include "catalogue.h"

namespace {

// A code covers many rules; the message tells them apart. The first fragment that it has decides.
struct hint_row {
    const char* fragment;
    const char* hint;
};

constexpr hint_row hint_rows[] = {
    {"'STANDBY_ARCHIVE'", "Give the section a name without STANDBY_ARCHIVE."},
    {"can not config before ARCH_TYPE", "Put the section's ARCH_TYPE line above this one."},
    {"too long(max 16)",
     "An instance name has at most 16 characters; several names are separated by /."},
    {"too long(max 256)",
     "Shorten the directory or the section's name: with an archive file's name behind it the path "
     "has at most 256 characters."},
    {"is too long", "Shorten it to 64 characters."},
    {"ARCH_SEND_DELAY is only supported",
     "Remove ARCH_SEND_DELAY: only ASYNC and SUBSCRIBE have it."},
    {"can configure ARCH_FAILOVER", "Remove ARCH_FAILOVER: only REALTIME and TIMELY have it."},
    {"ARCH_DEST not configured", "Add ARCH_DEST to the section."},
    {"ARCH_INCOMING_PATH not configured",
     "Add ARCH_INCOMING_PATH, the directory for the other node's archives."},
    {"instance name is not configured",
     "Add ARCH_DEST with the name of the other node's instance."},
    {"directory privilege", "Create the directory, or let the server's user write in it."},
    {"DFS path", "Choose a directory that is not on DFS storage."},
    {"cannot find in kqmal.ini",
     "Add the instance to kqmal.ini, or correct its name in ARCH_DEST."},
    {"MAL_INST_HOST or MAL_INST_PORT", "Give the instance both of them in kqmal.ini."},
    {"WAIT_APPLY to 1", "Set WAIT_APPLY = 0 in this section."},
    {"as 1 at the same time", "Set one of the two to 0."},
    {"timer of an ASYNC destination is not named",
     "Give ARCH_TIMER_NAME the name of a timer of kqtimer.ini."},
    {"the value is empty", "Write [user[/password]@]server."},
    {"not configured timer", "Add ARCH_TIMER_NAME with the name of a timer of kqtimer.ini."},
    {"need config ARCH_DEST_IP", "Add ARCH_DEST_IP and ARCH_DEST_PORT to the section."},
    {"need config XMAL_IP", "Add XMAL_IP and XMAL_PORT above the first section."},
    {"Please check ", "Add or correct the setting above the first section."},
    {"has same ARCH_DEST name", "Name every Raft member once."},
    {"has same ARCH_DEST(",
     "It is a member already: `promote` makes a learner a voter, `address` gives it another "
     "address."},
    {"has same ARCH_DEST_ID", "Give every Raft member, and RAFT_SELF_ID, a number of its own."},
    {"ARCH_DEST_IP(", "Give every Raft member, and XMAL_IP with XMAL_PORT, an address of its own."},
    {"cannot be self instance", "Name another instance than this one."},
    {"raft arch at the same time",
     "Remove the RAFT destinations, or the destinations of the other type."},
    {"is a member of the Raft group", "Use `kqarch raft`: it keeps the group's settings in step."},
    {"would not be read back", "Leave out control characters and outer blanks, and shorten it."},
    {"does not exist and cannot be created",
     "Create the directory, or let the server's user write above it."},
    {" is not for ", "INCOMING_PATH is for REMOTE, ARCH_TIMER_NAME for ASYNC and SUBSCRIBE."},
    {"names no TYPE", "Add TYPE=LOCAL, REALTIME, SYNC, ASYNC, TIMELY, REMOTE or SUBSCRIBE."},
    {"names no DEST", "Add DEST= with a directory, instance names or a connection text."},
    {"names no ARCH_TIMER_NAME", "Add ARCH_TIMER_NAME= with the name of a timer of kqtimer.ini."},
    {"names no INCOMING_PATH", "Add INCOMING_PATH= with the directory for its archives."},
    {"Invalid ARCH_TYPE", "Add ARCH_TYPE as the first line of the section."},
    {"the address is this instance itself",
     "Name another server: this one is on this machine, with the port of PORT_NUM in kq.ini."},
    {"no @ and no server", "Write user/password@server."},
    {"no service of that name",
     "Name localhost, host:port, or a service of kqsvc.ini (SVC_INI = 1 in kq.ini switches it "
     "on)."},
    {"no [user[/password]@]server", "Write server, user@server or user/password@server."},
};

}  // namespace

std::string hint_for(kqcode_t code, const std::string& message) {
    for (const hint_row& row : hint_rows)
        if (message.find(row.fragment) != message.npos) return row.hint;
    const code_entry* entry = find_code(code);
    return entry != nullptr ? entry->remedy : "";
}
