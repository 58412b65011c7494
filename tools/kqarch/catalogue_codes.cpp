#include <algorithm>

#include "catalogue.h"

#define CODE(name) name, #name

namespace {

constexpr code_entry codes[] = {
    {CODE(ARCH_E_BACKUP), "A backup copy of kqarch.ini could not be made or deleted.",
     "The server copies kqarch.ini to kqarch_bak_LSN.log beside it and later deletes the copy. The "
     "directory is not writable, the disk is full, or the copy to be deleted is not there.",
     "Make the configuration directory writable for the server's user, see that its disk has room, "
     "and repeat the operation."},
    {CODE(ARCH_E_NO_SECTION), "A destination's key stands before the first section.",
     "Only the global keys may stand above the first [section] of kqarch.ini; every other key "
     "belongs to a destination. A damaged section header has the same effect.",
     "Move the key below the [name] line of the destination that it belongs to."},
    {CODE(ARCH_E_FILE_OPEN), "kqarch.ini could not be created, read or written.",
     "The file or its directory is missing, is no regular file, or does not let the server's user "
     "in.",
     "Check that the path exists and that the server's user may read and write it, then start "
     "again."},
    {CODE(ARCH_E_OUT_OF_MEMORY), "Memory ran out, or the text of kqarch.ini outgrew its buffer.",
     "The system refused an allocation, or the configuration written as text has more than 160000 "
     "characters. A file that could not be written is left as it was.",
     "Free memory on the machine or raise the process's limit; if the configuration is very large, "
     "remove destinations that are not needed."},
    {CODE(ARCH_E_CFG_CHANGING), "Another configuration change is under way.",
     "A cluster node, or one exclusive change, holds the guard that keeps changes apart. The "
     "request is refused at once and nothing waits for it.",
     "Wait until the other change has ended and repeat the request."},
    {CODE(ARCH_E_OUT_OF_SPACE), "One archive file would not fit on the destination's disk.",
     "The file system that holds the directory of a LOCAL destination, or the incoming path of a "
     "REMOTE one, has less free space than ARCH_FILE_SIZE asks for.",
     "Free space on that file system, choose a directory on another one, or lower ARCH_FILE_SIZE."},
    {CODE(ARCH_E_NO_ARCH_PATH), "There is no archive path to collect.",
     "The cluster layer asked for this node's archive paths and the configuration has neither a "
     "LOCAL nor a REMOTE destination.",
     "Configure at least one LOCAL destination."},
    {CODE(ARCH_E_DUPLICATE_NAME), "A section of that name exists already.",
     "Section names are unique whatever the case of their letters: [ARCHIVE_LOCAL1] and "
     "[archive_local1] are the same name.",
     "Give one of the two sections another name, or remove it if it is a copy."},
    {CODE(ARCH_E_PARA_NOT_ALLOWED), "A key or value that is not allowed here.",
     "The key is none of kqarch.ini, ARCH_TYPE names no destination type, ARCH_DEST, "
     "ARCH_TIMER_NAME or ARCH_INCOMING_PATH stands before ARCH_TYPE, or ARCH_FAILOVER is given for "
     "a type other than REALTIME and TIMELY.",
     "Check the spelling of the key or type, put ARCH_TYPE first in its section, and remove keys "
     "that the type does not have; \"kqarch explain\" lists them."},
    {CODE(ARCH_E_INVALID_VALUE), "A value is invalid, or two values disagree.",
     "A number is no integer or outside its bounds, a text is too long, a line is no key = value, "
     "a setting that the type needs is missing, or settings contradict each other: Raft beside "
     "REALTIME, TIMELY or REMOTE, a vote interval below twice the heartbeat, an ARCH_DEST_ID given "
     "twice, a destination that is this instance, a cluster that waits for apply.",
     "Correct the value or the line; \"kqarch explain KEY\" gives a key's bounds and rule, "
     "\"kqarch explain TYPE\" what a type needs."},
    {CODE(ARCH_E_CLAUSE_SYNTAX), "An archive clause is empty or malformed.",
     "The clause of an online change is a list KEYWORD=value, KEYWORD=value. A segment has no =, "
     "an empty keyword or an empty value, or a comma stands at the end.",
     "Rewrite the clause as KEYWORD=value pairs with one comma between them and none at the end."},
    {CODE(ARCH_E_DEST_EXISTS), "Another destination uses this destination already.",
     "Two destinations have the same directory, or name the same instance (names are compared "
     "ignoring case).",
     "Give the destination a directory or an instance of its own, or remove the one that repeats "
     "the other."},
    {CODE(ARCH_E_INVALID_TYPE), "The archive type is not valid here.",
     "A section has no ARCH_TYPE, a clause names a type that cannot be changed to, or SYNC is "
     "asked "
     "for on a standby database that has neither REALTIME nor TIMELY destinations.",
     "Set ARCH_TYPE to a type that this database can have, as the first key of the section."},
    {CODE(ARCH_E_INVALID_DEST), "The destination is missing, invalid or unusable.",
     "ARCH_DEST or ARCH_INCOMING_PATH is not given, the directory cannot be created or written to, "
     "the path is too long or on DFS storage, an instance name is longer than 16 characters or not "
     "in kqmal.ini, a subscriber's service is unknown, or ARCH_SEND_DELAY is given for a type that "
     "has none.",
     "Name a directory that the server's user can write, or instances that kqmal.ini lists; remove "
     "ARCH_SEND_DELAY unless the type is ASYNC or SUBSCRIBE."},
    {CODE(ARCH_E_NO_LOCAL), "A LOCAL destination is needed and there is none.",
     "Every other type of destination ships archives that were first stored here, so that the "
     "configuration must have a LOCAL destination too.",
     "Add a section with ARCH_TYPE = LOCAL and ARCH_DEST = a directory."},
    {CODE(ARCH_E_TOO_MANY_LOCAL), "More than 8 LOCAL, or more than 8 REMOTE, destinations.",
     "An instance has at most 8 destinations of each of these types; both are counted under this "
     "code at start-up and when one is added.",
     "Remove LOCAL or REMOTE sections until 8 of each are left."},
    {CODE(ARCH_E_TOO_MANY_ASYNC), "More than 8 ASYNC destinations.",
     "An instance has at most 8 destinations of the type.",
     "Remove ASYNC sections until 8 are left."},
    {CODE(ARCH_E_TOO_MANY_REALTIME), "More than 8 REALTIME destinations.",
     "An instance has at most 8 destinations of the type; sections with ARCH_TYPE = MARCH count.",
     "Remove REALTIME sections until 8 are left."},
    {CODE(ARCH_E_CLAUSE_UNKNOWN_KEYWORD), "An archive clause names an unknown keyword.",
     "The keywords of an online change are not all spelled like the keys of kqarch.ini: TYPE, "
     "DEST, "
     "FILE_SIZE, SPACE_LIMIT and HANG_FLAG, for example, stand without ARCH_.",
     "Check the spelling of the keyword in the clause."},
    {CODE(ARCH_E_INVALID_NUMBER), "A number in an archive clause is negative or no integer.",
     "Numbers are unsigned: decimal, octal with a leading 0, or hexadecimal with 0x.",
     "Give the keyword an unsigned integer."},
    {CODE(ARCH_E_TIMER_NOT_FOUND), "The timer is not in kqtimer.ini.",
     "ARCH_TIMER_NAME of an ASYNC or SUBSCRIBE destination names a timer that the timer "
     "configuration does not hold, is empty, or TIMER_INI in kq.ini is 0, so that kqtimer.ini is "
     "not read.",
     "Add a [section] of that name to kqtimer.ini, set TIMER_INI = 1 in kq.ini, or correct "
     "ARCH_TIMER_NAME."},
    {CODE(ARCH_E_INVALID_PORT), "A port is too short, not decimal or above 65535.",
     "The port behind the colon of a subscriber's host:port has at least two decimal digits; the "
     "ports in a service's address list are checked likewise, but one digit is enough there.",
     "Correct the port in ARCH_DEST of the subscriber, or in the service's line of kqsvc.ini."},
    {CODE(ARCH_E_TOO_MANY_TIMELY), "More than 8 TIMELY destinations.",
     "An instance has at most 8 destinations of the type.",
     "Remove TIMELY sections until 8 are left."},
    {CODE(ARCH_E_REALTIME_TIMELY_CONFLICT), "REALTIME and TIMELY destinations together.",
     "The two kinds of standby exclude each other in one instance.",
     "Decide for one of the two types and change or remove the sections of the other."},
    {CODE(ARCH_E_TOO_MANY_REMOTE), "More than 8 REMOTE destinations.",
     "A destination was to be changed to REMOTE while 8 exist; at start-up and when one is added, "
     "ARCH_E_TOO_MANY_LOCAL stands for this too.",
     "Remove a REMOTE destination before the change."},
    {CODE(ARCH_E_MPP_NOT_SUPPORTED), "TIMELY or REMOTE in MPP mode.",
     "MPP_FLAG in kq.ini is 1, and an instance in MPP mode has neither TIMELY nor REMOTE "
     "destinations.",
     "Remove the TIMELY and REMOTE sections, or set MPP_FLAG = 0 in kq.ini if the instance is not "
     "part of an MPP system."},
    {CODE(ARCH_E_TOO_MANY_RAFT), "Too many members of the Raft group.",
     "RAFT and LEARNER destinations together number more than 18, or a voting member was to be "
     "added to a group that is full.",
     "Remove RAFT or LEARNER sections of members that have left the group."},
    {CODE(ARCH_E_TOO_MANY_LEARNER), "More than 9 LEARNER destinations.",
     "A Raft group has at most 9 learners.", "Remove LEARNER sections until 9 are left."},
    {CODE(ARCH_E_SYNC_CONFLICT), "SYNC beside RAFT, REMOTE or a multi-instance destination.",
     "SYNC destinations are for a single instance: no RAFT or REMOTE destination, and no other "
     "destination whose ARCH_DEST names several instances, may stand beside them.",
     "Remove the SYNC sections, or else the RAFT and REMOTE sections and all but one instance name "
     "of every ARCH_DEST."},
    {CODE(ARCH_E_SUBSCRIBE_CONFLICT), "SUBSCRIBE beside anything but LOCAL.",
     "An instance that serves a subscriber has LOCAL destinations and the SUBSCRIBE one, and no "
     "other type.",
     "Remove the SUBSCRIBE section, or every section that is neither LOCAL nor SUBSCRIBE."},
    {CODE(ARCH_E_TOO_MANY_SUBSCRIBE), "More than one SUBSCRIBE destination.",
     "An instance serves one subscriber.", "Keep one SUBSCRIBE section and remove the others."},
    {CODE(ARCH_E_INVALID_FILE_SIZE), "ARCH_FILE_SIZE is out of range.",
     "The size of one archive file of a LOCAL or REMOTE destination, in MB, lies outside the key's "
     "bounds; 0 is no exception.",
     "Set ARCH_FILE_SIZE within its bounds (\"kqarch explain ARCH_FILE_SIZE\")."},
    {CODE(ARCH_E_TOO_LONG), "A name, destination or path is longer than its limit.",
     "Section names and instance lists take 128 characters a piece, paths of LOCAL and REMOTE "
     "destinations 256.",
     "Shorten the name or the path; a symbolic link can stand for a long directory."},
    {CODE(ARCH_E_DEST_IS_SELF), "The destination is this instance itself.",
     "ARCH_DEST names the instance that kqarch.ini belongs to (INSTANCE_NAME in kq.ini), or a "
     "subscriber's address is this machine with this instance's port.",
     "Name another instance; if the file was copied from that instance, correct INSTANCE_NAME in "
     "kq.ini."},
    {CODE(ARCH_E_DEST_NOT_FOUND), "No destination has that name.",
     "A destination to be dropped, promoted or checked is not in the configuration, perhaps "
     "because "
     "another session dropped it just now.",
     "Look at the destinations with \"kqarch show\" and repeat the request with one of them."},
    {CODE(ARCH_E_TIMER_NAME_TOO_LONG), "ARCH_TIMER_NAME is longer than 127 characters.",
     "An archive clause gives a timer name that does not fit.",
     "Use a shorter timer name, in the clause and in kqtimer.ini."},
    {CODE(ARCH_E_NO_TIMER), "An ASYNC destination without a timer.",
     "A destination is to become ASYNC, and neither the clause nor the destination names a timer.",
     "Add ARCH_TIMER_NAME=timer to the clause, with a timer of kqtimer.ini."},
    {CODE(ARCH_E_INVALID_SPACE_LIMIT), "ARCH_SPACE_LIMIT is out of range.",
     "The space of a LOCAL or REMOTE destination, in MB, is neither 0 (no limit) nor within the "
     "key's bounds.",
     "Set ARCH_SPACE_LIMIT to 0 or within its bounds (\"kqarch explain ARCH_SPACE_LIMIT\")."},
    {CODE(ARCH_E_INVALID_HANG_FLAG), "ARCH_HANG_FLAG is out of range.",
     "The flag of a LOCAL destination is neither 0 nor 1.", "Set ARCH_HANG_FLAG to 0 or 1."},
    {CODE(ARCH_E_INVALID_PATH), "A LOCAL or REMOTE path is not a valid path name.",
     "The path is empty or holds a control character, such as a tab.",
     "Write the path without control characters, 1 to 256 characters long."},
    {CODE(ARCH_E_TOO_MANY_INSTS), "Too many instance names in one destination.",
     "ARCH_DEST names more than 16 instances, or more than one for SYNC. A / at the end counts as "
     "one more, empty, name.",
     "Shorten the list to 16 names, to one name for SYNC, and remove a / at its end."},
    {CODE(ARCH_E_DUPLICATE_PATH), "Another LOCAL or REMOTE destination uses the path.",
     "A REMOTE destination was to be added with a path that is taken, letter case aside.",
     "Give the destination an incoming path of its own."},
    {CODE(ARCH_E_MULTI_INST_DEST), "Several instances where only one is allowed.",
     "A destination that names several instances cannot be changed to LOCAL, SYNC or REMOTE.",
     "Drop the destination and add a new one of the other type."},
    {CODE(ARCH_E_NO_INCOMING_PATH), "A REMOTE destination without an incoming path.",
     "A destination is to become REMOTE, and the clause does not say where the other node's "
     "archives are stored.",
     "Add INCOMING_PATH=directory to the clause."},
    {CODE(ARCH_E_INVALID_SEND_DELAY), "ARCH_SEND_DELAY is out of range.",
     "The delay of an ASYNC or SUBSCRIBE destination, in minutes, is longer than a day.",
     "Set ARCH_SEND_DELAY to 0 to 1440."},
    {CODE(ARCH_E_SHARED_PATH_CHANGED), "A REMOTE path may not change while archives are shared.",
     "With ARCH_LOCAL_SHARE every node uses the same archive directories, so that one node cannot "
     "move its path alone.",
     "Keep the incoming path as it is, or stop the cluster and change the path on every node."},
    {CODE(ARCH_E_PEER_CFG_MISMATCH), "A peer node's configuration does not match this node's.",
     "With shared archives, each path of this node's REMOTE destinations must be one that the peer "
     "names too, for the same instance. Without sharing, nodes of a cluster do not agree at all.",
     "Compare kqarch.ini of the two nodes: REMOTE destinations, their incoming paths and "
     "ARCH_LOCAL_SHARE."},
    {CODE(ARCH_E_INVALID_FLUSH_BUF_SIZE), "ARCH_FLUSH_BUF_SIZE is neither 0 nor in range.",
     "The flush buffer of a LOCAL or REMOTE destination, in MB, lies outside the key's bounds.",
     "Set ARCH_FLUSH_BUF_SIZE to 0 or within its bounds (\"kqarch explain "
     "ARCH_FLUSH_BUF_SIZE\")."},
    {CODE(ARCH_E_TOO_MANY_SYNC), "More than 8 SYNC destinations.",
     "An instance has at most 8 destinations of the type.",
     "Remove SYNC sections until 8 are left."},
    {CODE(ARCH_E_FAILOVER_WAIT_APPLY), "ARCH_FAILOVER and WAIT_APPLY are both 1.",
     "A destination cannot fail over while the server waits for it to apply. WAIT_APPLY may come "
     "from the global ARCH_WAIT_APPLY, and is 1 for TIMELY when neither is given.",
     "Set ARCH_FAILOVER = 0, or WAIT_APPLY = 0 in the section."},
    {CODE(ARCH_E_PEER_PATH_CONFLICT), "A peer node uses an archive path that this node uses.",
     "Archives are not shared between the nodes, yet two of them store archives in the same "
     "directory.",
     "Give each node directories of its own, or share them on every node with ARCH_LOCAL_SHARE."},
    {CODE(ARCH_E_RAFT_DEST_TOO_LONG), "A Raft member's name is longer than 128 characters.",
     "The name of a member to be checked or removed does not fit.",
     "Use the member's instance name as ARCH_DEST gives it."},
    {CODE(ARCH_E_NOT_LEARNER), "The destination is not a LEARNER.",
     "An operation on a learner names a destination of another type.",
     "Name a LEARNER destination (\"kqarch show\" lists them)."},
    {CODE(ARCH_E_RAFT_TYPE_MISMATCH), "The destination has not the expected Raft type.",
     "An operation on a voting member names a destination of another type, or one on a learner "
     "names this instance.",
     "Name a destination of the type that the operation is for (\"kqarch show\" lists them)."},
    {CODE(ARCH_E_NOT_RAFT_MEMBER), "The destination is neither RAFT nor LEARNER.",
     "An operation on the Raft group names a destination that does not belong to it.",
     "Name a RAFT or LEARNER destination (\"kqarch show\" lists them)."},
    {CODE(ARCH_E_VALUE_OUT_OF_RANGE), "A value of an archive clause is outside its key's range.",
     "ARCH_RECOVER_TIME or RAFT_VOTE_INTERVAL lies outside its bounds, the vote interval is below "
     "twice RAFT_HB_INTERVAL, or WAIT_APPLY or ARCH_FAILOVER is neither 0 nor 1.",
     "Choose a value within the bounds that \"kqarch explain KEY\" gives."},
    {CODE(ARCH_E_EP_NO_REMOTE), "Another node of the cluster has no REMOTE destination here.",
     "Each node of a shared-storage cluster stores the archives of every other node, so that it "
     "needs a REMOTE destination for each of them, also for a node that is down.",
     "Add a REMOTE section with ARCH_DEST = the node's instance name and an ARCH_INCOMING_PATH."},
    {CODE(ARCH_E_MAL_NOT_CONFIGURED), "The communication between instances is not configured.",
     "Archives are shipped to other instances, but MAL_INI in kq.ini is 0, or an instance that a "
     "destination names has no host or port in kqmal.ini (TIMELY needs both), or is not listed "
     "there.",
     "Set MAL_INI = 1 in kq.ini and give every instance a section in kqmal.ini with MAL_INST_NAME, "
     "MAL_INST_HOST and MAL_INST_PORT."},
};

// What the module only passes on.
constexpr code_entry sibling_codes[] = {
    {-8201, "PLATFORM_E_NO_ENDPOINT", "The instance is not an endpoint of its cluster.",
     "HPC_NODE in kq.ini is above 1, and kqdcr.ini has no section of this instance's name, or is "
     "not read because DCR_INI in kq.ini is not 1.",
     "Set DCR_INI = 1 in kq.ini, and give every node a [section] with its instance name, DCR_SEQNO "
     "and EP_SEQNO in kqdcr.ini."},
};

}  // namespace

std::span<const code_entry> all_codes() {
    return codes;
}

const code_entry* find_code(kqcode_t code) {
    const auto* found = std::ranges::find(codes, code, &code_entry::code);
    if (found != std::end(codes)) return found;
    const auto* sibling = std::ranges::find(sibling_codes, code, &code_entry::code);
    return sibling == std::end(sibling_codes) ? nullptr : sibling;
}
