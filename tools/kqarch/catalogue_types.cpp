#include <algorithm>
#include <string>

#include "catalogue.h"

namespace {

// What several types have in common.
constexpr type_rule path_length{ARCH_E_INVALID_VALUE, "ARCH_DEST has at most 256 characters."};
constexpr type_rule text_length{ARCH_E_INVALID_VALUE, "ARCH_DEST has at most 128 characters."};
constexpr type_rule dest_not_self{ARCH_E_DEST_IS_SELF, "ARCH_DEST is not this instance's name."};
constexpr type_rule names_not_self{ARCH_E_DEST_IS_SELF,
                                   "None of the names in ARCH_DEST is this instance's."};
constexpr type_rule names_not_in_use{ARCH_E_DEST_EXISTS,
                                     "No other destination names one of these instances."};
constexpr type_rule names_length{ARCH_E_INVALID_DEST,
                                 "Each instance name has at most 16 characters."};
constexpr type_rule names_count{ARCH_E_TOO_MANY_INSTS, "ARCH_DEST names at most 16 instances."};
constexpr type_rule local_exists{ARCH_E_NO_LOCAL, "There is a LOCAL destination."};
constexpr type_rule no_subscriber{ARCH_E_SUBSCRIBE_CONFLICT, "There is no SUBSCRIBE destination."};
constexpr type_rule one_name_beside_sync{
    ARCH_E_SYNC_CONFLICT, "ARCH_DEST names one instance only where a SYNC destination exists."};
constexpr type_rule dest_given{ARCH_E_INVALID_DEST, "ARCH_DEST is given."};
constexpr type_rule no_send_delay{ARCH_E_INVALID_DEST, "ARCH_SEND_DELAY is not given, or 0."};
constexpr type_rule no_failover{ARCH_E_PARA_NOT_ALLOWED, "ARCH_FAILOVER is not given."};
constexpr type_rule archive_name_length{
    ARCH_E_INVALID_DEST,
    "The name of an archive file (directory, section's name, time stamp, number and the postfix of "
    "kq.ini) has at most 256 characters and no control character."};
constexpr type_rule not_on_dfs{ARCH_E_INVALID_DEST, "The directory is not on DFS storage."};
constexpr type_rule disk_has_room{ARCH_E_OUT_OF_SPACE,
                                  "The disk has room for one file of ARCH_FILE_SIZE."};
constexpr type_rule directory_usable{
    ARCH_E_INVALID_DEST,
    "The directory exists or can be created, and a file can be created in it."};
constexpr type_rule space_limit{ARCH_E_INVALID_SPACE_LIMIT,
                                "ARCH_SPACE_LIMIT is 0 or within its bounds."};
constexpr type_rule flush_buffer{ARCH_E_INVALID_FLUSH_BUF_SIZE,
                                 "ARCH_FLUSH_BUF_SIZE is 0 or within its bounds."};
constexpr type_rule file_size{ARCH_E_INVALID_FILE_SIZE, "ARCH_FILE_SIZE is within its bounds."};
constexpr type_rule one_directory_each{
    ARCH_E_DEST_EXISTS, "No other LOCAL or REMOTE destination has the same directory."};
constexpr type_rule mal_configured{ARCH_E_MAL_NOT_CONFIGURED, "MAL_INI in kq.ini is 1."};
constexpr type_rule names_in_mal{ARCH_E_INVALID_DEST, "Each instance is in kqmal.ini."};
constexpr type_rule no_mpp{ARCH_E_MPP_NOT_SUPPORTED, "MPP_FLAG in kq.ini is 0."};
constexpr type_rule no_raft{ARCH_E_INVALID_VALUE, "There is no RAFT destination."};
constexpr type_rule failover_or_wait{ARCH_E_FAILOVER_WAIT_APPLY,
                                     "ARCH_FAILOVER and WAIT_APPLY are not both 1."};
constexpr type_rule timer_not_empty{ARCH_E_TIMER_NOT_FOUND,
                                    "ARCH_TIMER_NAME, where it stands, is not empty."};
constexpr type_rule timer_given{ARCH_E_INVALID_VALUE, "ARCH_TIMER_NAME is given."};
constexpr type_rule timer_exists{ARCH_E_TIMER_NOT_FOUND, "The timer is in kqtimer.ini."};
constexpr type_rule delay_up_to_a_day{ARCH_E_INVALID_SEND_DELAY,
                                      "ARCH_SEND_DELAY is at most 1440 minutes."};
constexpr type_rule address_length{ARCH_E_INVALID_VALUE, "ARCH_DEST_IP has at most 64 characters."};
constexpr type_rule one_member_name{ARCH_E_INVALID_DEST, "ARCH_DEST names exactly one instance."};
constexpr type_rule member_address{
    ARCH_E_INVALID_VALUE,
    "ARCH_DEST_IP and ARCH_DEST_PORT are given, except in the DPC modes BP, MP and BS."};
constexpr type_rule member_id{ARCH_E_INVALID_VALUE, "ARCH_DEST_ID is given and within its bounds."};
constexpr type_rule center_id{ARCH_E_INVALID_VALUE, "ARCH_CENTER_ID is within its bounds."};
constexpr type_rule group_size{ARCH_E_TOO_MANY_RAFT,
                               "There are at most 18 RAFT and LEARNER destinations together."};
constexpr type_rule member_name_once{ARCH_E_INVALID_VALUE,
                                     "No other RAFT or LEARNER destination has the same name."};
constexpr type_rule member_address_once{
    ARCH_E_INVALID_VALUE,
    "No other RAFT or LEARNER destination has the same ARCH_DEST_IP and ARCH_DEST_PORT (in the DPC "
    "modes BP, MP and BS they may)."};
constexpr type_rule member_id_once{
    ARCH_E_INVALID_VALUE, "No other RAFT or LEARNER destination has the same ARCH_DEST_ID."};
constexpr type_rule member_not_own_address{
    ARCH_E_INVALID_VALUE,
    "ARCH_DEST_IP and ARCH_DEST_PORT are not XMAL_IP and XMAL_PORT (in the DPC modes BP, MP and BS "
    "they may be)."};
constexpr type_rule member_not_own_id{ARCH_E_INVALID_VALUE, "ARCH_DEST_ID is not RAFT_SELF_ID."};

constexpr type_rule local_rules[] = {
    path_length,
    dest_not_self,
    {ARCH_E_DEST_EXISTS, "No other destination uses ARCH_DEST, letter case aside."},
    {ARCH_E_INVALID_PATH, "ARCH_DEST is a valid path name."},
    {ARCH_E_TOO_MANY_LOCAL, "There are at most 8 LOCAL destinations."},
    dest_given,
    archive_name_length,
    not_on_dfs,
    no_send_delay,
    no_failover,
    disk_has_room,
    directory_usable,
    space_limit,
    flush_buffer,
    file_size,
    {ARCH_E_INVALID_HANG_FLAG, "ARCH_HANG_FLAG is 0 or 1."},
    {ARCH_E_INVALID_VALUE, "ARCH_DEST without a / at its end is not this instance's name."},
    one_directory_each,
};

constexpr type_rule realtime_rules[] = {
    text_length,
    names_not_self,
    names_not_in_use,
    names_length,
    names_count,
    {ARCH_E_TOO_MANY_REALTIME, "There are at most 8 REALTIME destinations."},
    local_exists,
    no_raft,
    {ARCH_E_REALTIME_TIMELY_CONFLICT, "There is no TIMELY destination."},
    no_subscriber,
    one_name_beside_sync,
    dest_given,
    no_send_delay,
    {ARCH_E_INVALID_VALUE,
     "A destination that names several instances does not wait for apply (WAIT_APPLY, or "
     "ARCH_WAIT_APPLY, is not 1)."},
    mal_configured,
    names_in_mal,
    failover_or_wait,
    {ARCH_E_INVALID_VALUE,
     "WAIT_APPLY, or ARCH_WAIT_APPLY, is not 1 where REMOTE destinations exist."},
};

constexpr type_rule sync_rules[] = {
    text_length,
    names_not_self,
    names_not_in_use,
    names_length,
    {ARCH_E_TOO_MANY_INSTS, "ARCH_DEST names one instance."},
    {ARCH_E_TOO_MANY_SYNC, "There are at most 8 SYNC destinations."},
    {ARCH_E_SYNC_CONFLICT, "There is no REMOTE and no RAFT destination."},
    local_exists,
    no_subscriber,
    {ARCH_E_SYNC_CONFLICT, "No destination names several instances."},
    dest_given,
    no_send_delay,
    no_failover,
    mal_configured,
    names_in_mal,
    {ARCH_E_INVALID_TYPE,
     "On a standby database there is a REALTIME or TIMELY destination too (checked by the server "
     "when it knows its mode)."},
};

constexpr type_rule async_rules[] = {
    text_length,
    names_not_self,
    names_not_in_use,
    names_length,
    names_count,
    timer_not_empty,
    {ARCH_E_TOO_MANY_ASYNC, "There are at most 8 ASYNC destinations."},
    local_exists,
    no_subscriber,
    one_name_beside_sync,
    dest_given,
    no_failover,
    timer_given,
    timer_exists,
    delay_up_to_a_day,
    mal_configured,
    names_in_mal,
};

constexpr type_rule timely_rules[] = {
    text_length,
    names_not_self,
    names_not_in_use,
    names_length,
    names_count,
    {ARCH_E_REALTIME_TIMELY_CONFLICT, "There is no REALTIME destination."},
    {ARCH_E_TOO_MANY_TIMELY, "There are at most 8 TIMELY destinations."},
    local_exists,
    no_raft,
    no_subscriber,
    one_name_beside_sync,
    dest_given,
    no_send_delay,
    mal_configured,
    names_in_mal,
    {ARCH_E_MAL_NOT_CONFIGURED, "Each instance has MAL_INST_HOST and MAL_INST_PORT in kqmal.ini."},
    no_mpp,
    failover_or_wait,
};

constexpr type_rule remote_rules[] = {
    {ARCH_E_INVALID_VALUE, "ARCH_DEST and ARCH_INCOMING_PATH have at most 256 characters."},
    {ARCH_E_DEST_IS_SELF, "Neither is this instance's name."},
    {ARCH_E_DEST_EXISTS, "No other destination uses either of them, letter case aside."},
    {ARCH_E_INVALID_PATH, "ARCH_INCOMING_PATH is a valid path name."},
    {ARCH_E_SYNC_CONFLICT, "There is no SYNC destination."},
    {ARCH_E_TOO_MANY_LOCAL, "There are at most 8 REMOTE destinations."},
    local_exists,
    no_raft,
    no_subscriber,
    {ARCH_E_INVALID_DEST, "ARCH_INCOMING_PATH is given."},
    archive_name_length,
    not_on_dfs,
    no_send_delay,
    no_failover,
    disk_has_room,
    directory_usable,
    mal_configured,
    {ARCH_E_INVALID_DEST, "ARCH_DEST is given and has at most 16 characters."},
    {ARCH_E_INVALID_DEST, "The instance is in kqmal.ini."},
    space_limit,
    flush_buffer,
    file_size,
    no_mpp,
    one_directory_each,
    {ARCH_E_DEST_EXISTS, "No other REMOTE destination names the same instance."},
};

constexpr type_rule raft_rules[] = {
    text_length,
    names_not_self,
    names_not_in_use,
    names_length,
    address_length,
    {ARCH_E_SYNC_CONFLICT, "There is no SYNC destination."},
    {ARCH_E_INVALID_VALUE, "There is no REALTIME, TIMELY or REMOTE destination."},
    local_exists,
    {ARCH_E_INVALID_VALUE,
     "XMAL_IP and XMAL_PORT are given, except in the DPC modes BP, MP and BS."},
    {ARCH_E_INVALID_VALUE, "XMAL_HB_INTERVAL, RAFT_HB_INTERVAL and RAFT_VOTE_INTERVAL are given."},
    {ARCH_E_INVALID_VALUE, "RAFT_VOTE_INTERVAL is 0 or at least twice RAFT_HB_INTERVAL."},
    {ARCH_E_INVALID_VALUE, "RAFT_SELF_ID is given."},
    no_subscriber,
    one_member_name,
    no_send_delay,
    no_failover,
    member_address,
    member_id,
    center_id,
    group_size,
    member_name_once,
    member_address_once,
    member_id_once,
    member_not_own_address,
    member_not_own_id,
};

constexpr type_rule learner_rules[] = {
    text_length,
    names_not_self,
    names_not_in_use,
    names_length,
    address_length,
    {ARCH_E_TOO_MANY_LEARNER, "There are at most 9 LEARNER destinations."},
    local_exists,
    no_subscriber,
    one_member_name,
    no_send_delay,
    no_failover,
    member_address,
    member_id,
    center_id,
    group_size,
    member_name_once,
    member_address_once,
    member_id_once,
    member_not_own_address,
    member_not_own_id,
};

constexpr type_rule subscribe_rules[] = {
    text_length,
    {ARCH_E_INVALID_DEST, "ARCH_DEST is not empty."},
    {ARCH_E_INVALID_VALUE, "ARCH_DEST reads [user[/password]@]server."},
    {ARCH_E_INVALID_PORT,
     "The server's port, where one is given, has two or more decimal digits and is at most 65535."},
    {ARCH_E_DEST_IS_SELF, "Neither the server nor an address of the service is this instance."},
    {ARCH_E_INVALID_DEST, "A server that is neither localhost nor host:port is in kqsvc.ini."},
    {ARCH_E_SUBSCRIBE_CONFLICT, "Every other destination is LOCAL."},
    local_exists,
    {ARCH_E_TOO_MANY_SUBSCRIBE, "There is one SUBSCRIBE destination."},
    dest_given,
    no_failover,
    timer_given,
    timer_exists,
    delay_up_to_a_day,
    {ARCH_E_INVALID_VALUE, "ARCH_SUBSCRIBE_MODE is within its bounds."},
    {ARCH_E_INVALID_VALUE, "ARCH_THRESHOLD_PER_SECOND is within its bounds."},
    {ARCH_E_INVALID_VALUE, "ARCH_DEST is not this instance's name."},
};

constexpr type_entry types[] = {
    {ARCH_TYPE_LOCAL, "LOCAL", "", "An archive directory on this machine.", local_rules},
    {ARCH_TYPE_REALTIME, "REALTIME", "MARCH",
     "A standby instance, or the nodes of a standby cluster, that receives archives as they are "
     "written.",
     realtime_rules},
    {ARCH_TYPE_SYNC, "SYNC", "", "A single standby instance that is kept in step.", sync_rules},
    {ARCH_TYPE_ASYNC, "ASYNC", "",
     "A standby instance, or the nodes of a standby cluster, that receives archives when a timer "
     "of kqtimer.ini fires.",
     async_rules},
    {ARCH_TYPE_TIMELY, "TIMELY", "",
     "A standby instance, or the nodes of a standby cluster, that the server by default waits for.",
     timely_rules},
    {ARCH_TYPE_REMOTE, "REMOTE", "",
     "The archives of another node of the shared-storage cluster, stored in a directory here.",
     remote_rules},
    {ARCH_TYPE_RAFT, "RAFT", "", "A voting member of the Raft group.", raft_rules},
    {ARCH_TYPE_LEARNER, "LEARNER", "", "A member of the Raft group without a vote.", learner_rules},
    {ARCH_TYPE_SUBSCRIBE, "SUBSCRIBE", "", "The subscriber to this instance's archives.",
     subscribe_rules},
};

}  // namespace

std::span<const type_entry> all_types() {
    return types;
}

const type_entry* find_type(std::string_view name) {
    const std::string wanted(name);
    const auto* found = std::ranges::find(types, arch_cfg_get_arch_type_by_name(wanted.c_str()),
                                          &type_entry::number);
    return found == std::end(types) ? nullptr : found;
}
