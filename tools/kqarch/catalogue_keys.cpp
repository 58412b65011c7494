#include <algorithm>

#include "catalogue.h"
#include "ini.h"
#include "text.h"

namespace {

constexpr auto global = key_scope::global;
constexpr auto section = key_scope::section;

constexpr type_set none = 0;
constexpr type_set local = type_bit(ARCH_TYPE_LOCAL);
constexpr type_set standbys = type_bit(ARCH_TYPE_REALTIME) | type_bit(ARCH_TYPE_TIMELY);
constexpr type_set synchronous = type_bit(ARCH_TYPE_SYNC);
constexpr type_set asynchronous = type_bit(ARCH_TYPE_ASYNC);
constexpr type_set remote = type_bit(ARCH_TYPE_REMOTE);
constexpr type_set raft = type_bit(ARCH_TYPE_RAFT) | type_bit(ARCH_TYPE_LEARNER);
constexpr type_set subscriber = type_bit(ARCH_TYPE_SUBSCRIBE);
constexpr type_set every_type =
    local | standbys | synchronous | asynchronous | remote | raft | subscriber;

constexpr key_entry keys[] = {
    {ini_index_arch_type, "ARCH_TYPE", section, true, "", "none", every_type,
     "The destination's type.",
     "Stands first: ARCH_DEST, ARCH_TIMER_NAME and ARCH_INCOMING_PATH are refused before it. Any "
     "case; MARCH is read as REALTIME and written back so.",
     true},
    {ini_index_arch_dest, "ARCH_DEST", section, true, "", "none", every_type,
     "Where the archives go. LOCAL: a directory. REMOTE: the name of the other node's instance. "
     "SUBSCRIBE: [user[/password]@]server. The others: one instance name, or for the nodes of a "
     "cluster up to 16 with / between them.",
     "At most 256 characters for LOCAL and REMOTE, 128 for the others, 16 for an instance name; "
     "never this instance, and not what another destination uses. Instance names are kept in upper "
     "case.",
     true},
    {ini_index_arch_timer_name, "ARCH_TIMER_NAME", section, true, "", "none",
     asynchronous | subscriber, "The timer of kqtimer.ini that drives the destination.",
     "Must be given, and be a section of kqtimer.ini. In a REMOTE section it replaces the instance "
     "name of ARCH_DEST.",
     true},
    {ini_index_arch_file_size, "ARCH_FILE_SIZE", section, false, "MB", "1024", local | remote,
     "The size of one archive file.", "The disk must have room for one file.", true},
    {ini_index_arch_space_limit, "ARCH_SPACE_LIMIT", section, false, "MB", "0", local | remote,
     "The space that the destination's archives may take; 0 is no limit.",
     "0 is accepted whatever the bounds.", true},
    {ini_index_arch_hang_flag, "ARCH_HANG_FLAG", section, false, "", "1", local,
     "1: the server hangs while it cannot archive here.",
     "The first LOCAL destination always has 1, whatever the file says.", true},
    {ini_index_arch_timely_wait_apply, "ARCH_WAIT_APPLY", global, false, "",
     "0 with REALTIME destinations, 1 with TIMELY ones, otherwise 0", none,
     "1: the server waits until a standby has applied what it was sent. Holds for every REALTIME "
     "and TIMELY destination without a WAIT_APPLY of its own.",
     "", true},
    {ini_index_arch_reserve_time, "ARCH_RESERVE_TIME", global, false, "minutes", "none", none,
     "How long archives are kept.", "", true},
    {ini_index_incoming_path, "ARCH_INCOMING_PATH", section, true, "", "none", remote,
     "The directory in which the other node's archives are stored.",
     "At most 256 characters; not a directory that another LOCAL or REMOTE destination uses.",
     true},
    {ini_index_arch_flush_buf_size, "ARCH_FLUSH_BUF_SIZE", section, false, "MB", "0",
     local | remote, "The buffer that archives are flushed through; 0 is none.", "", true},
    {ini_index_xmal_hb_interval, "XMAL_HB_INTERVAL", global, false, "seconds", "none", none,
     "The heartbeat interval of the cross-instance link.",
     "Must be given where RAFT destinations exist.", true},
    {ini_index_raft_hb_interval, "RAFT_HB_INTERVAL", global, false, "seconds", "none", none,
     "The heartbeat interval of the Raft group.", "Must be given where RAFT destinations exist.",
     true},
    {ini_index_raft_vote_interval, "RAFT_VOTE_INTERVAL", global, false, "seconds", "none", none,
     "The vote interval of the Raft group.",
     "Must be given where RAFT destinations exist, and be at least twice RAFT_HB_INTERVAL. 0 is "
     "accepted whatever the bounds, and never written back.",
     true},
    {ini_index_arch_dest_ip, "ARCH_DEST_IP", section, true, "", "none", raft,
     "The address of the Raft member.",
     "At most 64 characters. Must be given, except in the DPC modes BP, MP and BS; no two members, "
     "and not XMAL_IP and XMAL_PORT, have the same address and port.",
     true},
    {ini_index_arch_dest_port, "ARCH_DEST_PORT", section, false, "", "none", raft,
     "The port of the Raft member.",
     "Must be given, except in the DPC modes BP, MP and BS; together with ARCH_DEST_IP it is the "
     "member's alone.",
     true},
    {ini_index_xmal_ip, "XMAL_IP", global, true, "", "none", none,
     "The address of this instance's end of the cross-instance link.",
     "At most 64 characters. Must be given where RAFT destinations exist, except in the DPC modes "
     "BP, MP and BS.",
     true},
    {ini_index_xmal_port, "XMAL_PORT", global, false, "", "none", none,
     "The port of this instance's end of the cross-instance link.",
     "Must be given where RAFT destinations exist, except in the DPC modes BP, MP and BS.", true},
    {ini_index_arch_local_share, "ARCH_LOCAL_SHARE", global, false, "", "none: not shared", none,
     "Given: the nodes of the cluster share their local archives.",
     "Any value within the bounds switches it on, 0 too, and is written back as 1: to switch it "
     "off, remove the line.",
     true},
    {ini_index_arch_local_share_check, "ARCH_LOCAL_SHARE_CHECK", global, false, "", "none", none,
     "1: the sharing of local archives is checked.", "", true},
    {ini_index_arch_send_delay, "ARCH_SEND_DELAY", section, false, "minutes", "0",
     asynchronous | subscriber, "How long sending is delayed.",
     "At most 1440, a day. A section of another type that gives it a value other than 0 is "
     "refused.",
     true},
    {ini_index_raft_self_id, "RAFT_SELF_ID", global, false, "", "none", none,
     "This node's number in the Raft group.",
     "Must be given where RAFT destinations exist; no ARCH_DEST_ID has the same number.", true},
    {ini_index_arch_dest_id, "ARCH_DEST_ID", section, false, "", "none", raft,
     "The member's number in the Raft group.",
     "Must be given; no two members, and not RAFT_SELF_ID, have the same number.", true},
    {ini_index_raft_learner, "RAFT_LEARNER", global, false, "", "0", none,
     "1: this node is a learner of the Raft group.",
     "Must be added again after the server has rewritten the file.", false},
    {ini_index_arch_wait_apply, "WAIT_APPLY", section, false, "",
     "ARCH_WAIT_APPLY, and without that 0 for REALTIME and 1 for TIMELY", standbys,
     "1: the server waits until this standby has applied what it was sent.",
     "Not 1 together with ARCH_FAILOVER = 1; not 1 for a REALTIME destination that names several "
     "instances or belongs to an instance with REMOTE destinations.",
     true},
    {ini_index_arch_recover_time, "ARCH_RECOVER_TIME", section, false, "seconds", "1", synchronous,
     "The recovery interval of the destination.", "", true},
    {ini_index_raft_pkg_interval, "RAFT_PKG_INTERVAL", global, false, "", "none", none,
     "The package interval of the Raft group.", "", true},
    {ini_index_self_center_id, "SELF_CENTER_ID", global, false, "", "0", none,
     "The number of the centre that this node belongs to.",
     "0 means not configured and is not written back.", true},
    {ini_index_arch_center_id, "ARCH_CENTER_ID", section, false, "", "0", raft,
     "The number of the centre that the member belongs to.",
     "0 means not configured and is not written back.", true},
    {ini_index_arch_failover, "ARCH_FAILOVER", section, false, "", "0", standbys,
     "1: failover to the standby is on.",
     "Not 1 together with WAIT_APPLY = 1. A section of another type that gives it is refused.",
     true},
    {ini_index_arch_subscribe_mode, "ARCH_SUBSCRIBE_MODE", section, false, "", "0", subscriber,
     "The mode of the subscriber.", "", true},
    {ini_index_arch_threshold_per_second, "ARCH_THRESHOLD_PER_SECOND", section, false, "", "0",
     subscriber, "The threshold of the subscriber, per second.", "", true},
    {ini_index_arch_recv_path, "ARCH_RECV_PATH", section, true, "", "none", every_type,
     "Read and kept, and used by nothing.", "At most 64 characters.", false},
    {ini_index_arch_asm_mirror, "ARCH_ASM_MIRROR", global, false, "", "none", none,
     "The mirror setting of archive files on ASM storage.", "", true},
    {ini_index_arch_asm_striping, "ARCH_ASM_STRIPING", global, false, "KB", "none", none,
     "The striping size of archive files on ASM storage.", "Exactly 0, 32, 64, 128 or 256.", true},
};

}  // namespace

std::span<const key_entry> all_keys() {
    return keys;
}

const key_entry* find_key(std::string_view name) {
    const auto* found =
        std::ranges::find_if(keys, [&](const key_entry& key) { return same_text(key.name, name); });
    return found == std::end(keys) ? nullptr : found;
}
