// The plain way to write kqarch.ini: one snprintf a line, each where the last one ended.
#include <cstdarg>
#include <cstdio>

#include "peers.h"

namespace bench {
namespace {

class printer {
  public:
    explicit printer(schar* text) : end_(text), limit_(text + ARCH_CFG_TEXT_SIZE) {}

    void line(const schar* format, ...) KQ_PRINTF(2, 3) {
        va_list arguments;
        va_start(arguments, format);
        end_ += std::vsnprintf(end_, static_cast<std::size_t>(limit_ - end_), format, arguments);
        va_end(arguments);
    }

  private:
    schar* end_;
    schar* limit_;
};

void print_settings(printer& out, const arch_cfg_sys_t& from) {
    if (from.wait_apply != ARCH_UNSET_FLAG) out.line("ARCH_WAIT_APPLY = %u\n\n", from.wait_apply);
    if (from.arch_reserve_time != ARCH_UNSET_LONG)
        out.line("ARCH_RESERVE_TIME = %u\n\n", from.arch_reserve_time);
    if (from.arch_local_share != ARCH_UNSET_FLAG)
        out.line("ARCH_LOCAL_SHARE = %u\n\n", from.arch_local_share);
    if (from.arch_local_share_check != ARCH_UNSET_FLAG)
        out.line("ARCH_LOCAL_SHARE_CHECK = %u\n\n", from.arch_local_share_check);
    if (from.xmal_hb_interval != ARCH_UNSET_LONG)
        out.line("XMAL_HB_INTERVAL = %u\n\n", from.xmal_hb_interval);
    if (from.raft_hb_interval != 0) out.line("RAFT_HB_INTERVAL = %u\n\n", from.raft_hb_interval);
    if (from.raft_vote_interval != 0 && from.raft_vote_interval != ARCH_UNSET_LONG)
        out.line("RAFT_VOTE_INTERVAL = %u\n\n", from.raft_vote_interval);
    if (from.xmal_ip[0] != '\0') out.line("XMAL_IP = %s\n\n", from.xmal_ip);
    if (from.xmal_port != 0) out.line("XMAL_PORT = %u\n\n", from.xmal_port);
    if (from.raft_self_id != ARCH_UNSET_SHORT) out.line("RAFT_SELF_ID = %u\n\n", from.raft_self_id);
    if (from.arch_asm_mirror != ARCH_UNSET_FLAG)
        out.line("ARCH_ASM_MIRROR = %u\n\n", from.arch_asm_mirror);
    if (from.arch_asm_striping != ARCH_UNSET_SHORT)
        out.line("ARCH_ASM_STRIPING = %u\n\n", from.arch_asm_striping);
    if (from.raft_pkg_interval != 0) out.line("RAFT_PKG_INTERVAL = %u\n\n", from.raft_pkg_interval);
    if (from.self_center_id != 0) out.line("SELF_CENTER_ID = %u\n\n", from.self_center_id);
}

void print_sizes(printer& out, const arch_cfg_t& from) {
    out.line("ARCH_FILE_SIZE = %u\n", from.file_size);
    out.line("ARCH_SPACE_LIMIT = %u\n", from.space_limit);
    out.line("ARCH_FLUSH_BUF_SIZE = %u\n", from.flush_buf_size);
}

void print_instances(printer& out, const arch_cfg_t& from) {
    out.line("ARCH_DEST = %s", from.dest_insts[0]);
    for (int i = 1; i < from.n_inst; ++i)
        out.line("/%s", from.dest_insts[i]);
    out.line("\n");
}

void print_realtime(printer& out, const arch_cfg_t& from) {
    print_instances(out, from);
    out.line("\n");
    if (from.wait_apply != ARCH_UNSET_FLAG) out.line("WAIT_APPLY = %u\n", from.wait_apply);
    out.line("ARCH_FAILOVER = %u\n", from.arch_failover);
}

void print_member(printer& out, const arch_cfg_t& from) {
    out.line("ARCH_DEST = %s\n", from.dest);
    if (from.arch_dest_ip[0] != '\0') out.line("ARCH_DEST_IP = %s\n", from.arch_dest_ip);
    if (from.arch_dest_port != 0) out.line("ARCH_DEST_PORT = %u\n", from.arch_dest_port);
    out.line("ARCH_DEST_ID = %u\n", from.arch_dest_id);
    if (from.arch_center_id != 0) out.line("ARCH_CENTER_ID = %u\n", from.arch_center_id);
}

void print_own_lines(printer& out, const arch_cfg_t& from) {
    switch (from.type) {
        case ARCH_TYPE_LOCAL:
            out.line("ARCH_DEST = %s\n", from.dest);
            print_sizes(out, from);
            out.line("ARCH_HANG_FLAG = %u\n", from.hang_flag);
            break;
        case ARCH_TYPE_REALTIME:
            print_realtime(out, from);
            break;
        case ARCH_TYPE_ASYNC:
            print_instances(out, from);
            out.line("ARCH_TIMER_NAME = %s\n", from.timer_name);
            out.line("ARCH_SEND_DELAY = %u\n", from.arch_send_delay);
            break;
        case ARCH_TYPE_REMOTE:
            out.line("ARCH_DEST = %s\n", from.timer_name);
            out.line("ARCH_INCOMING_PATH = %s\n", from.dest);
            print_sizes(out, from);
            break;
        default:
            print_member(out, from);
    }
}

}  // namespace

void print_registry(const arch_cfg_sys_t& registry, schar* text) {
    printer out(text);
    out.line("#Velkor Database Archive Configuration file\n#this is comments\n\n");
    print_settings(out, registry);
    for (const arch_cfg_t* arch = registry.arch_lst.start; arch != nullptr;
         arch = arch->link.next) {
        out.line("[%s]\n", arch->name);
        out.line("ARCH_TYPE = %s\n", arch_cfg_get_arch_name_by_type(arch->type));
        print_own_lines(out, *arch);
        out.line("\n");
    }
}

}  // namespace bench
