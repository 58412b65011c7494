/* The INI module: the main configuration kq.ini, and the key table and reader of the other
 * configuration files. */
#ifndef INI_H
#define INI_H

#include "kqtype.h"

KQ_BEGIN_C

/* The record that the rest of the server reads directly. */
typedef struct global_ini_info_struct {
    pathname_t config_path;  /* the directory of the configuration files; may be empty */
    sysname_t instance_name; /* INSTANCE_NAME */
    kqbool mail_flag;        /* MAL_INI: the communication configuration is in use */
} global_ini_info_t;

extern global_ini_info_t global_ini_info;

/* What the module reads of kq.ini. A server without MPP, a shared-storage cluster or DFS storage
 * answers 0 for those. */
enum kqini_para_index {
    ini_index_instance_name = 0,         /* INSTANCE_NAME, a text */
    ini_index_port_num = 1,              /* PORT_NUM, 1 to 65535 */
    ini_index_arch_flag = 609,           /* ARCH_FLAG: 1 archiving is on, 0 off */
    ini_index_mpp_flag = 613,            /* MPP_FLAG: 1 the instance is part of an MPP system */
    ini_index_hpc_node = 700,            /* HPC_NODE: nodes of the shared-storage cluster, 0 none */
    ini_index_dfs_flag = 701,            /* DFS_FLAG: 1 paths may be on DFS storage */
    ini_index_logfile_postfix_name = 839 /* LOGFILE_POSTFIX_NAME, a text: the last part of the
                                            names of log files */
};

/* A number of kq.ini; `scope` is 0. 0 for an index that names no number. */
ulint ini_get_value(ulint scope, ulint index);

/* A text of kq.ini, or null for an index that names no text. Borrowed. */
schar* ini_get_str_value(ulint index);

/* This instance's name (borrowed; null while no configuration is loaded) and listening port. */
schar* ini_get_instance_name(void);
usint ini_get_instance_port(void);

/* Keys of the other configuration files. Those of kqarch.ini are 23 to 54, 250 and 251. */
enum other_ini_para_index {
    ini_index_arch_type = 23,
    ini_index_arch_dest = 24,
    ini_index_arch_timer_name = 25,
    ini_index_arch_file_size = 26,
    ini_index_arch_space_limit = 27,
    ini_index_arch_hang_flag = 28,
    ini_index_arch_timely_wait_apply = 29, /* ARCH_WAIT_APPLY */
    ini_index_arch_reserve_time = 30,
    ini_index_incoming_path = 31, /* ARCH_INCOMING_PATH */
    ini_index_arch_flush_buf_size = 32,
    ini_index_xmal_hb_interval = 33,
    ini_index_raft_hb_interval = 34,
    ini_index_raft_vote_interval = 35,
    ini_index_arch_dest_ip = 36,
    ini_index_arch_dest_port = 37,
    ini_index_xmal_ip = 38,
    ini_index_xmal_port = 39,
    ini_index_arch_local_share = 40,
    ini_index_arch_local_share_check = 41,
    ini_index_arch_send_delay = 42,
    ini_index_raft_self_id = 43,
    ini_index_arch_dest_id = 44,
    ini_index_raft_learner = 45,
    ini_index_arch_wait_apply = 46, /* WAIT_APPLY */
    ini_index_arch_recover_time = 47,
    ini_index_raft_pkg_interval = 48,
    ini_index_self_center_id = 49,
    ini_index_arch_center_id = 50,
    ini_index_arch_failover = 51,
    ini_index_arch_subscribe_mode = 52,
    ini_index_arch_threshold_per_second = 53,
    ini_index_arch_recv_path = 54,
    ini_index_arch_asm_mirror = 250,
    ini_index_arch_asm_striping = 251
};

/* One entry of the key table. */
typedef struct other_ini_alterable_struct {
    const schar* para_name; /* the key, upper case */
    kqbool is_str;          /* 1 a text, 0 an integer */
    lint64 max_value;       /* bounds of an integer, inclusive */
    lint64 min_value;
    const schar* para_string; /* the key's line: one plain %s (text) or %u (integer), a line feed
                                 at the end */
} other_ini_alterable_t;

/* The index of a key, ignoring case; -1 when no configuration file has it. */
lint ini_get_other_ini_array_index(const schar* para_name);

/* The entry of an index, or null. Borrowed. */
other_ini_alterable_t* ini_get_other_ini_info_by_index(ulint index);

/* 1 when the whole text is `0`, a decimal number without a leading zero, an octal one (`0` and
 * octal digits) or a hexadecimal one (`0x` and digits), and its value fits 32 bits unsigned. No
 * sign, no blanks, not empty. */
kqbool ini_is_integer(const schar* text);

/* Reads a configuration file and hands it to its module: `which` 2 is kqarch.ini, whose sections go
 * to arch_cfg_create and whose keys go to arch_cfg_add_value, both with the process registry, whose
 * lock start-up does not need. Stops at the first refusal with one line on standard error,
 * "kqarch.ini:LINE: KEY refused, code N" (or the section's name, or what is wrong with the line),
 * which never shows a value, and returns its code; -803 for a line that is none, -140 for what
 * cannot be read or is no regular file; else 0. */
kqcode_t ini_read_other_info_for_posix(const schar* path, ulint which);

enum { INI_READ_ARCH = 2 };

/* The stand-in layer: change a parameter or a key's bounds in memory, until the next
 * kq_instance_open. */
void ini_set_value(ulint index, ulint value);
void ini_set_str_value(ulint index, const schar* text);
void ini_set_other_ini_range(ulint index, lint64 min_value, lint64 max_value);

KQ_END_C

#endif
