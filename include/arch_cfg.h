/* arch_cfg: the archive-destination configuration of a database server instance.
 *
 * One file, kqarch.ini, says where an instance stores and ships its archived logs. This module
 * loads it into the process's one registry, checks it, answers the server's threads, and writes it
 * back.
 *
 * Life. First the siblings are up: kq.ini is read, and kqmal.ini, kqtimer.ini and the client
 * services where it names them; without kq.ini archiving counts as off, and start-up does nothing.
 * Then arch_cfg_sys_init loads and checks. When it succeeds, the server sets `has_inited` to 1
 * under the lock, which some queries wait for, and threads may come. The end is
 * arch_cfg_sys_destroy, when no thread uses the registry any more; until the next start-up no other
 * function is called then. It does no harm to call it twice, or after a start-up that failed.
 *
 * Conventions, which hold for every function below unless it says otherwise:
 *
 * Result codes. A kqcode_t is 0 (or positive) for success and one of ARCH_E_... otherwise. A code
 * of a function called on the way is passed up unchanged. Nothing throws; a failed allocation is
 * ARCH_E_OUT_OF_MEMORY. Checks stop at the first rule that fails, and a refusal leaves the
 * registry as it was, except where a function says what stays.
 *
 * The lock. `arch_cfg_sys.mutex` guards the settings, the list and every record. It is not
 * recursive: a second lock by its holder halts the process. "Lock: held" means that the caller
 * holds it (between arch_cfg_sys_enter and arch_cfg_sys_exit), "Lock: taken" that the function
 * takes and releases it and is called without it, "Lock: none" that it needs none. "None taken"
 * means that a caller who shares the record or list with other threads holds it. With clang and
 * -Wthread-safety the compiler checks this at every call of a function with an annotation. Where a
 * function has a registry parameter, null means the process registry, which it then locks itself or
 * expects locked, as it says; the address of a registry, `arch_cfg_sys` included, is used as it is.
 *
 * Memory. The registry owns its records: one block each from os_malloc. A record pointer that a
 * function returns is borrowed: it is safe while the caller holds the lock, or while nobody drops
 * the record. Where a function releases the lock before it returns one, a caller beside which
 * others drop takes the lock and looks it up again (arch_cfg_find_by_dest_low_without_enter), or
 * uses the pointer for its identity only (arch_cfg_drop_low). Texts handed in are copied. Every
 * text stored is terminated and never longer than its field; nothing is cut unless a function says
 * so. No other pointer may be null unless a function says that it may: records, results and buffers
 * are not asked.
 *
 * Texts. Every text handed in is terminated. Lengths are in bytes, without the terminator; the size
 * of a buffer is in bytes with it. A null text handed to a look-up matches nothing. "Ignoring case"
 * folds the ASCII letters.
 *
 * Messages. A refusal prints its message on standard error (aq_fprintf_inner) and writes the same
 * to the error log at level 4 (elog_report_ex), except where a function says: silent (neither),
 * printed only, or logged only. Each message is one line: a control character of a text in it is
 * shown as \xNN.
 *
 * Not configured. A setting that kqarch.ini need not give holds a marker: ARCH_UNSET_FLAG,
 * ARCH_UNSET_SHORT or ARCH_UNSET_LONG, or 0 or the empty text, as the fields below say. */
#ifndef ARCH_CFG_H
#define ARCH_CFG_H

#include "kqlst.h"
#include "kqtype.h"
#include "mem.h"
#include "osmutex.h"

#if defined(__GNUC__)
#define ARCH_CFG_API __attribute__((visibility("default")))
#else
#define ARCH_CFG_API
#endif

KQ_BEGIN_C

/* ---- Result codes ---------------------------------------------------------------------------- */

enum arch_cfg_code {
    ARCH_E_BACKUP = -1,              /* copying or deleting a backup of kqarch.ini failed */
    ARCH_E_NO_SECTION = -104,        /* a destination's key before any section */
    ARCH_E_FILE_OPEN = -140,         /* kqarch.ini could not be created, read or written */
    ARCH_E_OUT_OF_MEMORY = -503,     /* an allocation failed, or a text outgrew its buffer */
    ARCH_E_CFG_CHANGING = -517,      /* another configuration change excludes this one */
    ARCH_E_OUT_OF_SPACE = -523,      /* an archive file of the configured size would not fit */
    ARCH_E_NO_ARCH_PATH = -715,      /* no LOCAL or REMOTE path to collect */
    ARCH_E_DUPLICATE_NAME = -801,    /* a section of that name exists, in any case */
    ARCH_E_PARA_NOT_ALLOWED = -802,  /* a key or parameter that is not allowed here */
    ARCH_E_INVALID_VALUE = -803,     /* a value is invalid, or two values disagree */
    ARCH_E_CLAUSE_SYNTAX = -804,     /* an archive clause is empty or malformed */
    ARCH_E_DEST_EXISTS = -806,       /* another destination already uses it */
    ARCH_E_INVALID_TYPE = -807,      /* the archive type is not valid for this */
    ARCH_E_INVALID_DEST = -808,      /* the destination is missing, invalid or unusable */
    ARCH_E_NO_LOCAL = -811,          /* needs a LOCAL destination, and there is none */
    ARCH_E_TOO_MANY_LOCAL = -812,    /* more than 8 LOCAL (at start-up and adding: or REMOTE) */
    ARCH_E_TOO_MANY_ASYNC = -813,    /* more than 8 ASYNC */
    ARCH_E_TOO_MANY_REALTIME = -814, /* more than 8 REALTIME */
    ARCH_E_CLAUSE_UNKNOWN_KEYWORD = -816, /* an archive clause names an unknown keyword */
    ARCH_E_INVALID_NUMBER = -818,         /* a number is negative or no integer */
    ARCH_E_TIMER_NOT_FOUND = -823,        /* the timer is not in kqtimer.ini */
    ARCH_E_INVALID_PORT = -838,           /* a port text is too short, not decimal or above 65535 */
    ARCH_E_TOO_MANY_TIMELY = -845,        /* more than 8 TIMELY */
    ARCH_E_REALTIME_TIMELY_CONFLICT = -846, /* REALTIME beside TIMELY */
    ARCH_E_TOO_MANY_REMOTE = -847,          /* more than 8 REMOTE (when modifying) */
    ARCH_E_MPP_NOT_SUPPORTED = -848,        /* TIMELY or REMOTE in MPP mode */
    ARCH_E_TOO_MANY_RAFT = -850,            /* too many RAFT, or RAFT and LEARNER together */
    ARCH_E_TOO_MANY_LEARNER = -853,         /* more than 9 LEARNER */
    ARCH_E_SYNC_CONFLICT = -855,      /* SYNC beside RAFT, REMOTE or a multi-instance destination */
    ARCH_E_SUBSCRIBE_CONFLICT = -856, /* SUBSCRIBE beside anything but LOCAL */
    ARCH_E_TOO_MANY_SUBSCRIBE = -858, /* more than one SUBSCRIBE */
    ARCH_E_INVALID_FILE_SIZE = -950,  /* ARCH_FILE_SIZE out of range */
    ARCH_E_TOO_LONG = -951,           /* a name, destination or path is longer than its limit */
    ARCH_E_DEST_IS_SELF = -952,       /* the destination is this instance itself */
    ARCH_E_DEST_NOT_FOUND = -953,     /* no destination has that name */
    ARCH_E_TIMER_NAME_TOO_LONG = -954, /* ARCH_TIMER_NAME longer than 127 */
    ARCH_E_NO_TIMER = -955,            /* ASYNC without a timer */
    ARCH_E_INVALID_SPACE_LIMIT = -956, /* ARCH_SPACE_LIMIT out of range */
    ARCH_E_INVALID_HANG_FLAG = -957,   /* ARCH_HANG_FLAG out of range */
    ARCH_E_INVALID_PATH = -958,        /* a LOCAL or REMOTE path is not a valid path name */
    ARCH_E_TOO_MANY_INSTS = -961,      /* more than 16 instance names, or more than one for SYNC */
    ARCH_E_DUPLICATE_PATH = -962,      /* a LOCAL or REMOTE destination already uses the path */
    ARCH_E_MULTI_INST_DEST = -963,     /* several instances where only one is allowed */
    ARCH_E_NO_INCOMING_PATH = -964,    /* REMOTE without an incoming path */
    ARCH_E_INVALID_SEND_DELAY = -971,  /* ARCH_SEND_DELAY out of range */
    ARCH_E_SHARED_PATH_CHANGED = -972, /* a REMOTE path may not change under ARCH_LOCAL_SHARE */
    ARCH_E_PEER_CFG_MISMATCH = -974,   /* a peer's configuration does not match this node's */
    ARCH_E_INVALID_FLUSH_BUF_SIZE = -975, /* ARCH_FLUSH_BUF_SIZE neither 0 nor in range */
    ARCH_E_TOO_MANY_SYNC = -977,          /* more than 8 SYNC */
    ARCH_E_FAILOVER_WAIT_APPLY = -982,    /* ARCH_FAILOVER and WAIT_APPLY both 1 */
    ARCH_E_PEER_PATH_CONFLICT = -1521,    /* a peer uses an archive path that this node uses */
    ARCH_E_RAFT_DEST_TOO_LONG = -3872,    /* a Raft destination name longer than 128 */
    ARCH_E_NOT_LEARNER = -3873,           /* a LEARNER was expected */
    ARCH_E_RAFT_TYPE_MISMATCH = -3874,    /* not the expected Raft type */
    ARCH_E_NOT_RAFT_MEMBER = -3875,       /* neither RAFT nor LEARNER */
    ARCH_E_VALUE_OUT_OF_RANGE = -4702,    /* a clause value outside its key's range */
    ARCH_E_EP_NO_REMOTE = -8219,          /* another node of the group has no REMOTE destination */
    ARCH_E_MAL_NOT_CONFIGURED = -9501     /* MAL is off, or the instance is not in kqmal.ini */
};

/* ---- Records --------------------------------------------------------------------------------- */

/* Destination types (`type` of a record). */
enum arch_cfg_type {
    ARCH_TYPE_NONE = 0,     /* ARCH_TYPE has not been read yet */
    ARCH_TYPE_LOCAL = 1,    /* an archive directory */
    ARCH_TYPE_REALTIME = 2, /* a standby; also read as MARCH, always written as REALTIME */
    ARCH_TYPE_SYNC = 3,     /* a standby */
    ARCH_TYPE_ASYNC = 4,    /* a standby, driven by a timer */
    ARCH_TYPE_TIMELY = 5,   /* a standby */
    ARCH_TYPE_REMOTE = 6,   /* the archive directory of another node of the cluster */
    ARCH_TYPE_RAFT = 7,     /* a voting member of the Raft group */
    ARCH_TYPE_LEARNER = 8,  /* a learner of the Raft group */
    ARCH_TYPE_SUBSCRIBE = 9 /* the subscriber */
};

enum arch_cfg_limit {
    ARCH_TYPE_COUNT = 10,       /* type numbers are 0 to 9 */
    ARCH_INST_MAX = 16,         /* instance names of a destination */
    ARCH_INST_NAME_MAX = 16,    /* characters of one */
    ARCH_IP_MAX = 64,           /* characters of an address */
    ARCH_CFG_TEXT_SIZE = 160000 /* characters of the buffer for the text of kqarch.ini */
};

/* Markers of a setting that is not configured; which one a field uses stands at the field. */
enum arch_cfg_unset { ARCH_UNSET_FLAG = 255, ARCH_UNSET_SHORT = 65535 };
#define ARCH_UNSET_LONG 4294967295u

typedef struct arch_cfg_struct arch_cfg_t;

/* A record's place in the list; both null while it is not linked. */
typedef struct arch_cfg_link_struct {
    arch_cfg_t* prev;
    arch_cfg_t* next;
} arch_cfg_link_t;

/* One archive destination: one section of kqarch.ini. What stands behind a field is the value of a
 * new record; without one it is 0 or empty. */
struct arch_cfg_struct {
    sysname_t name; /* the section's name; unique in a registry, ignoring case */
    usint type;     /* enum arch_cfg_type */
    /* REALTIME, SYNC, ASYNC, TIMELY, RAFT, LEARNER: the instance names of ARCH_DEST, upper case,
     * and how many there are. More than 16 is read as 16. */
    schar dest_insts[ARCH_INST_MAX][ARCH_INST_NAME_MAX + 1];
    byte n_inst; /* 1 */
    /* LOCAL: the archive directory. REMOTE: the incoming path, where the other node's archives are
     * stored. SUBSCRIBE: the connection text. The others: the one instance name, or empty when
     * ARCH_DEST names several. */
    pathname_t dest;
    pathname_t recv_path;  /* ARCH_RECV_PATH, up to 64; never written back */
    ulint space_limit;     /* LOCAL, REMOTE, in MB; 0: no limit */
    ulint file_size;       /* LOCAL, REMOTE, in MB; 1024 */
    usint hang_flag;       /* LOCAL; 1 */
    ulint flush_buf_size;  /* LOCAL, REMOTE, in MB; 0: none */
    pathname_t timer_name; /* ASYNC, SUBSCRIBE: the timer of kqtimer.ini. REMOTE: the name of the
                              remote instance, upper case */
    byte status;           /* 0 VALID, 1 INVALID, 2 ASYNC_SEND; 1. Set by the server */
    usint epno;            /* REMOTE: the cluster node it belongs to. Set by the server */
    schar arch_dest_ip[ARCH_IP_MAX + 1]; /* RAFT, LEARNER */
    usint arch_dest_port;                /* RAFT, LEARNER; 0: not configured */
    ulint arch_send_delay;               /* ASYNC, SUBSCRIBE, in minutes, 0 to 1440 */
    usint arch_dest_id;                  /* RAFT, LEARNER: the member's id; 65535, not configured */
    usint arch_center_id;                /* RAFT, LEARNER; 0: not configured */
    ulint arch_recover_time;             /* SYNC, in seconds; 1 */
    kqbool wait_apply;      /* REALTIME, TIMELY; 255, not configured: validation sets a default */
    ulint arch_failover;    /* REALTIME, TIMELY; 255, as wait_apply */
    ulint arch_subscb_mode; /* SUBSCRIBE */
    ulint arch_threshold_per_second; /* SUBSCRIBE */
    /* Addresses of the instances of a list. Kept for the server; not used here. */
    schar dest_ip_arr[ARCH_INST_MAX][ARCH_IP_MAX + 1];
    usint dest_port_arr[ARCH_INST_MAX];
    arch_cfg_link_t link;
};

/* The records of a registry, in the order in which they were created: the order of every search and
 * of the written file. */
typedef struct arch_cfg_lst_struct {
    ulint count;
    arch_cfg_t* start; /* oldest; null when empty */
    arch_cfg_t* end;   /* newest; null when empty */
} arch_cfg_lst_t;

/* A registry. What stands behind a field is its value after arch_cfg_sys_init_env, which for a
 * setting means not configured. */
typedef struct arch_cfg_sys_struct {
    byte has_inited; /* 0; the server sets it to 1 when start-up is done, nothing here does */
    os_mutex_t mutex;
    arch_cfg_lst_t arch_lst;
    pathname_t ini_dir;      /* kept for the server; not used here */
    kqbool wait_apply;       /* ARCH_WAIT_APPLY; 255 */
    usint arch_cfg_changing; /* the configuration-change guard; 0 */
    schar xmal_ip[ARCH_IP_MAX + 1];
    usint xmal_port;               /* 0 */
    ulint xmal_hb_interval;        /* in seconds; 4294967295 */
    ulint raft_hb_interval;        /* in seconds; 0 */
    ulint raft_vote_interval;      /* in seconds; 4294967295. Written interlocked */
    ulint raft_self_id;            /* 65535 */
    usint self_center_id;          /* 0 */
    ulint raft_pkg_interval;       /* in milliseconds; 0 */
    usint raft_cnt;                /* RAFT destinations; 0. Written interlocked */
    kqbool raft_learner;           /* this node is a learner; 0. Written interlocked */
    ulint arch_reserve_time;       /* in minutes; 4294967295 */
    kqbool arch_local_share;       /* 255 */
    kqbool arch_local_share_check; /* 255 */
    byte arch_asm_mirror;          /* 255 */
    usint arch_asm_striping;       /* 65535 */
} arch_cfg_sys_t;

/* The registry of the process. */
extern ARCH_CFG_API arch_cfg_sys_t arch_cfg_sys;

/* The prefix of generated section names, by type number; null for NONE, RAFT and LEARNER, whose
 * sections are not named so. */
extern ARCH_CFG_API const schar* const arch_cfg_name_pre[ARCH_TYPE_COUNT];

/* ---- Type catalogue -------------------------------------------------------------------------- */

/* The name of a type as it is written: "LOCAL" for 1 and so on; "NONE" for 0 and for every number
 * above 9. A constant text: not to be changed. Lock: none. */
ARCH_CFG_API schar* arch_cfg_get_arch_name_by_type(ulint arch_type);

/* The number of a type's name, ignoring case, the whole text compared (no blank is trimmed);
 * "MARCH" is 2. 0 for any other text. Lock: none. */
ARCH_CFG_API ulint arch_cfg_get_arch_type_by_name(const schar* type_name);

/* "VALID", "INVALID" or "ASYNC_SEND" for 0 to 2, else "UNKNOWN". Two names of one function; a
 * constant text. Lock: none. */
ARCH_CFG_API schar* arch_get_name_by_status(byte rstat);
ARCH_CFG_API schar* arch_cfg_get_stat_str(byte rstat);

/* How many records of the process registry have that type. Lock: held. */
ARCH_CFG_API ulint arch_cfg_get_cnt_by_type(ulint type) KQ_REQUIRES(arch_cfg_sys.mutex);
ARCH_CFG_API ulint arch_cfg_get_local_cnt(void) KQ_REQUIRES(arch_cfg_sys.mutex);
ARCH_CFG_API ulint arch_cfg_get_realtime_cnt(void) KQ_REQUIRES(arch_cfg_sys.mutex);
ARCH_CFG_API ulint arch_cfg_get_sync_cnt(void) KQ_REQUIRES(arch_cfg_sys.mutex);
ARCH_CFG_API ulint arch_cfg_get_async_cnt(void) KQ_REQUIRES(arch_cfg_sys.mutex);
ARCH_CFG_API ulint arch_cfg_get_timely_cnt(void) KQ_REQUIRES(arch_cfg_sys.mutex);
ARCH_CFG_API ulint arch_cfg_get_remote_cnt(void) KQ_REQUIRES(arch_cfg_sys.mutex);

/* Releases what a record owns besides its own block, which is nothing. Always 0. Called before a
 * record's block is freed. Lock: none. */
ARCH_CFG_API kqcode_t arch_cfg_destroy(arch_cfg_t* arch);

/* ---- Registry: life and lock ----------------------------------------------------------------- */

/* Makes the process registry empty, every setting not configured, with a new lock of level
 * 4294967245. Records still linked are not freed: a loaded registry is destroyed first.
 * Lock: none; no other thread uses the registry. */
ARCH_CFG_API void arch_cfg_sys_init_env(void);

/* Ends the process registry: frees the lock, sets `raft_cnt` to 0, frees every record. The other
 * fields keep their values. Only arch_cfg_sys_init_env makes it usable again.
 * Lock: none; no other thread uses the registry. */
ARCH_CFG_API void arch_cfg_sys_destroy(void);

/* Unlinks a record of the process registry and frees its block, without arch_cfg_destroy. `arch`
 * must be linked there; null is ignored. Lock: taken. */
ARCH_CFG_API void arch_cfg_destroy_for_drs(arch_cfg_t* arch) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* Takes the registry lock. When the last holder ended while holding it, the lock is recovered, the
 * registry used as that thread left it, and "os_mutex2_enter return EOWNERDEAD" logged at level 2.
 * Any other failure halts the process: kq_sys_halt("os_mutex_enter failure, code = N", -1). */
ARCH_CFG_API void arch_cfg_sys_enter(void) KQ_ACQUIRE(arch_cfg_sys.mutex);

/* Releases the registry lock; two names of one function. A failure halts the process with
 * "os_mutex_exit failure, code = N". */
ARCH_CFG_API void arch_cfg_sys_exit(void) KQ_RELEASE(arch_cfg_sys.mutex);
ARCH_CFG_API void arch_cfg_sys_release(void) KQ_RELEASE(arch_cfg_sys.mutex);

/* Takes the registry lock and returns the process registry; release with arch_cfg_sys_release. */
ARCH_CFG_API arch_cfg_sys_t* arch_cfg_sys_get(void) KQ_ACQUIRE(arch_cfg_sys.mutex);

/* Copies settings of the process registry out. While `has_inited` is 0, only the first parameter is
 * written, with 0. `arch_count` receives the number of records cut to 16 bits, `self_arch_seqno`
 * the low 8 bits of `raft_self_id`, the others the field of their name. `xmal_ip` holds at least 65
 * characters. No parameter may be null. Lock: taken. */
ARCH_CFG_API void arch_cfg_sys_get_info(kqbool* has_inited, usint* arch_count, kqbool* wait_apply,
                                        usint* arch_cfg_changing, byte* self_arch_seqno,
                                        schar* xmal_ip, usint* xmal_port, ulint* xmal_hb_interval,
                                        ulint* raft_hb_interval, ulint* raft_vote_interval,
                                        usint* raft_cnt, ulint* arch_reserve_time,
                                        kqbool* arch_local_share, kqbool* arch_local_share_check,
                                        kqbool* raft_learner, byte* arch_asm_mirror,
                                        usint* arch_asm_striping, usint* self_center_id)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* One setting each, as it stands at this moment: 255 for wait_apply and asm_mirror and 65535 for
 * asm_striping mean not configured. Lock: none, one atomic read a value. */
ARCH_CFG_API kqbool arch_cfg_get_wait_apply(void);
ARCH_CFG_API ulint arch_cfg_sys_get_raft_hb_interval(void);
ARCH_CFG_API void arch_cfg_get_asm_mirror_striping(byte* asm_mirror, usint* asm_striping);
ARCH_CFG_API usint arch_cfg_get_raft_cnt(void);
ARCH_CFG_API kqbool arch_cfg_check_self_is_learner(void);

/* ---- Look-up --------------------------------------------------------------------------------- */

/* What a search text is compared with, ignoring case, the whole text:
 *   LOCAL                            `dest`, the directory as it is written
 *   REMOTE                           `timer_name`, the remote instance's name
 *   REALTIME, SYNC, ASYNC, TIMELY    each of the `n_inst` instance names
 *   RAFT, LEARNER                    `dest`
 *   SUBSCRIBE, NONE                  nothing
 * A search goes in list order and returns the first record that matches, or null. */

/* Searches `cfg_sys`, null for the process registry. Lock: held, if that is the one searched. */
ARCH_CFG_API arch_cfg_t* arch_cfg_find_by_dest_low_without_enter(arch_cfg_sys_t* cfg_sys,
                                                                 const schar* dest);

/* The same in the process registry. Lock: taken, in spite of the name's ending. */
ARCH_CFG_API arch_cfg_t* arch_cfg_find_by_dest_low(const schar* dest)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* With `subscribe_flag` exactly 1 the subscriber, whatever `dest_org` says. Otherwise the record
 * that the whole text names, or else the first that one of its pieces between "/" names, tried in
 * order; empty pieces are skipped. Pieces are not searched for when one has more than 128
 * characters or there are more than 16. Lock: taken once for each search, so that it is not atomic.
 */
ARCH_CFG_API arch_cfg_t* arch_cfg_find_by_dest(const schar* dest_org, kqbool subscribe_flag)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* The first SUBSCRIBE record of the process registry, or null. */
ARCH_CFG_API arch_cfg_t* arch_cfg_find_subscribe_without_enter(void)
    KQ_REQUIRES(arch_cfg_sys.mutex); /* Lock: held */
ARCH_CFG_API arch_cfg_t* arch_cfg_find_subscribe(void)
    KQ_EXCLUDES(arch_cfg_sys.mutex); /* Lock: taken */

/* Copies the `dest` of every record of a type into `dest_arr`, in list order, and their number into
 * `num`. The caller supplies an entry for each, and for those that others may add meanwhile: a
 * registry that start-up accepts has at most 18 of a type. A `dest` of more than 128 characters (a
 * LOCAL path) is cut to 128. Lock: taken. */
ARCH_CFG_API void arch_cfg_get_arch_arr_by_type(usint arch_type, usint* num, sysname_t* dest_arr)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* Replaces `dest`: a text of more than 256 characters is cut to 256, null makes it empty.
 * Lock: none taken; held where the record is registered. */
ARCH_CFG_API void arch_cfg_set_dest(arch_cfg_t* arch_cfg, const schar* dest);

/* Takes the next piece of a list separated by "/": copies it into `dest_out` (129 characters) and
 * moves the cursor `dest_tmp` behind the separator, or to null when the list is used up. A list
 * that ends with "/" has an empty last piece. A null cursor yields an empty piece. The list is not
 * changed. 0, or ARCH_E_TOO_LONG for a piece of more than 128 characters: `dest_out` is then empty
 * and the cursor stays. Silent. Lock: none. */
ARCH_CFG_API kqcode_t arch_cfg_calc_next_inst_dest(schar** dest_tmp, schar* dest_out);

/* ---- Start-up -------------------------------------------------------------------------------- */

/* Loads kqarch.ini into the process registry and checks it. The registry is reset first
 * (arch_cfg_sys_init_env). When archiving is switched off in kq.ini (ARCH_FLAG 0) the result is 0
 * with an empty registry, and no file is looked at: a server that writes then (a change,
 * arch_cfg_sys_write_to_file) replaces kqarch.ini by one without destinations, so that it refuses
 * changes while archiving is off. `path_in` is the file, or null for kqarch.ini
 * in the configuration directory (in the working directory when that is empty), which is created
 * empty, mode 0600, when it is absent; a path that is given is never created.
 *   timer_chk       timers of ASYNC and SUBSCRIBE must be in kqtimer.ini
 *   valid_chk       0: load only, validate nothing
 *   asm_path_chk    probe paths on ASM storage like others
 * The first line that is refused, or else the first rule that fails, decides: the registry is
 * destroyed and the code returned, for a failed rule with "Validate kqarch.ini error, code=N" on
 * standard error. ARCH_E_FILE_OPEN when the default file cannot be created, or `path_in` has more
 * than 256 characters (silent; the registry is left empty, not destroyed), and from the reader for
 * a file that it cannot read. The caller destroys a loaded registry (arch_cfg_sys_destroy) before
 * it starts again: the reset forgets records, and frees none.
 * A file that names a subscriber and that its group or others may read is loaded with a warning in
 * the log, level 3.
 * Lock: none; no other thread uses the registry yet. */
ARCH_CFG_API kqcode_t arch_cfg_sys_init_with_check(const schar* path_in, kqbool timer_chk,
                                                   kqbool valid_chk, kqbool asm_path_chk)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* The same with `valid_chk` 1. */
ARCH_CFG_API kqcode_t arch_cfg_sys_init(const schar* path_in, kqbool timer_chk, kqbool asm_path_chk)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* ---- Reading the file ------------------------------------------------------------------------ */

/* The INI reader's callback for a section: appends a new record named `subname` to a registry and
 * returns it through `arch_out` (which may be null).
 *   ARCH_E_INVALID_VALUE   the name contains STANDBY_ARCHIVE; printed on standard output only
 *   ARCH_E_TOO_LONG        the name has more than 128 characters; silent
 *   ARCH_E_DUPLICATE_NAME  a section has that name, ignoring case; `*arch_out` is null; silent
 *   ARCH_E_OUT_OF_MEMORY   silent
 * `*arch_out` is written only on success and for a duplicate name.
 * Lock: with a null `cfg_sys` taken, from the search to the append; else the caller's business. */
ARCH_CFG_API kqcode_t arch_cfg_create(void* cfg_sys, const schar* subname, arch_cfg_t** arch_out);

/* Makes `arch` a new, unlinked record: every field as its declaration says, `name` the first 128
 * characters of the given one. Lock: none. */
ARCH_CFG_API void arch_init(arch_cfg_t* arch, const schar* name);

/* Writes a name for a new section of `type` into `subname` (129 characters): the type's prefix and
 * a number one above the highest that any section name of the process registry has behind that
 * prefix, 1 if none has; gaps are not filled. The prefix is looked for anywhere in a name, with
 * case: archive_local4 does not count for ARCHIVE_LOCAL. At most 10000 numbers are looked at. They
 * have 32 bits and are printed signed: above 2147483647 they come out negative. `subname` stays as
 * it is for a type without a prefix (NONE, RAFT, LEARNER, above 9). Lock: held. */
ARCH_CFG_API void arch_cfg_get_name(ulint type, schar* subname) KQ_REQUIRES(arch_cfg_sys.mutex);

/* The INI reader's callback for a key: checks the value and stores it in the record `arch` of the
 * current section, or in the settings for one of the fifteen global keys, which may stand
 * anywhere. `arch` is null before the first section. `value_str` may be changed in place. Keys are
 * found ignoring case. 0, or a positive result of a check, when it is stored; otherwise the field
 * is left as it was (but an unknown ARCH_TYPE makes `type` 0, and an instance list that is refused
 * may have changed `dest_insts`, for two SYNC names also `n_inst`):
 *   ARCH_E_NO_SECTION        a section's key without a section; printed only
 *   ARCH_E_INVALID_VALUE     longer than 256 characters in a LOCAL or REMOTE section, 128 elsewhere
 *                            (silent); no integer (silent); outside its bounds; ARCH_SEND_DELAY
 *                            above 1440 or WAIT_APPLY above 1 (silent); XMAL_HB_INTERVAL 0, a
 *                            striping size that ASM does not have, ARCH_DEST_IP, XMAL_IP or
 *                            ARCH_RECV_PATH longer than 64 (printed only)
 *   ARCH_E_PARA_NOT_ALLOWED  no key of kqarch.ini, or an unknown type (silent); ARCH_DEST,
 *                            ARCH_TIMER_NAME or ARCH_INCOMING_PATH before ARCH_TYPE
 *   ARCH_E_TIMER_NOT_FOUND   an empty ARCH_TIMER_NAME of an ASYNC section; silent
 *   any other                of arch_cfg_check_dest_validate (ARCH_DEST of LOCAL and REMOTE,
 *                            ARCH_INCOMING_PATH), arch_cfg_inst_dests_validate (ARCH_DEST of
 *                            REALTIME, SYNC, ASYNC, TIMELY, RAFT, LEARNER) or
 *                            arch_cfg_check_subscb_dest (ARCH_DEST of SUBSCRIBE, trimmed)
 * XMAL_*, RAFT_* and SELF_CENTER_ID always go to the process registry, the other settings to the
 * registry given. Each ARCH_TYPE = RAFT adds 1 to `raft_cnt` of the process registry.
 * Lock: with a null `cfg_sys` taken; else the caller's business, who then holds the process
 * registry's lock too where other threads use it. */
ARCH_CFG_API kqcode_t arch_cfg_add_value(void* cfg_sys, arch_cfg_t* arch, const schar* para_name,
                                         schar* value_str);

/* ---- Writing the file ------------------------------------------------------------------------ */

/* The whole text of kqarch.ini for the process registry: the header, the settings that are
 * configured, each destination in list order. RAFT_LEARNER, ARCH_RECV_PATH, a RAFT_VOTE_INTERVAL
 * of 0 and comments are never written. `rec_str` has room for ARCH_CFG_TEXT_SIZE characters and is
 * never written beyond. 0; or ARCH_E_OUT_OF_MEMORY when the text does not fit: `rec_str` is then
 * empty, and a line is logged. Lock: held, until the text has been used. */
ARCH_CFG_API kqcode_t arch_cfg_sys_write_to_rec(schar* rec_str) KQ_REQUIRES(arch_cfg_sys.mutex);

/* Pieces of that text, appended to the text in `rec_str`, which has room as above; a piece that
 * does not fit leaves it unchanged and logs a line. `buf` is a scratch buffer of 4096 characters
 * that is not needed any more and may be null. Lock: held. */
ARCH_CFG_API void arch_cfg_write_global_ini(schar* rec_str, schar* buf)
    KQ_REQUIRES(arch_cfg_sys.mutex);
ARCH_CFG_API void arch_cfg_write_local_ini(schar* rec_str, schar* buf, arch_cfg_t* arch)
    KQ_REQUIRES(arch_cfg_sys.mutex);
ARCH_CFG_API void arch_cfg_write_all_local_ini(schar* rec_str, schar* buf)
    KQ_REQUIRES(arch_cfg_sys.mutex);
/* LEARNER, or RAFT where `type` is RAFT. */
ARCH_CFG_API void arch_cfg_write_raft_ini(schar* rec_str, schar* buf, arch_cfg_t* arch)
    KQ_REQUIRES(arch_cfg_sys.mutex);
ARCH_CFG_API void arch_cfg_write_subscribe_ini(schar* rec_str, schar* buf, arch_cfg_t* arch)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* Rewrites kqarch.ini in the configuration directory with the text of the process registry. The
 * file is rewritten in place, mode and owner kept; a new one gets mode 0600. The text is complete
 * before the file is opened, and on disk on return. A failure in between leaves the file short: a
 * caller who wants it back makes a backup first (arch_file_gen_bak). Where the process has a limit
 * of file sizes it ignores SIGXFSZ, else that limit ends it.
 *   ARCH_E_FILE_OPEN      it cannot be opened or is no regular file (silent), or cannot be written
 *                         whole (logged only, with the file and the reason)
 *   ARCH_E_OUT_OF_MEMORY  the text does not fit (arch_cfg_sys_write_to_rec); the file is untouched
 * Lock: held. */
ARCH_CFG_API kqcode_t arch_cfg_sys_write_to_file(void) KQ_REQUIRES(arch_cfg_sys.mutex);

/* The same with a text that was made before, byte for byte; the registry is not changed.
 * ARCH_E_INVALID_VALUE for a null text; silent. Lock: taken when `with_enter` is 1; else held. */
ARCH_CFG_API kqcode_t arch_cfg_sys_write_by_rec(const schar* rec, kqbool with_enter);

/* Copies kqarch.ini to kqarch_bak_<lsn>.log beside it, or deletes that backup; the number is
 * printed signed. A backup of that number is replaced in one step, and complete and on disk on
 * return; one that fails leaves the older backup whole. ARCH_E_BACKUP, logged only, when it fails;
 * deleting a backup that does not exist does. Lock: none; the caller orders them around a write. */
ARCH_CFG_API kqcode_t arch_file_gen_bak(ulint64 lsn);
ARCH_CFG_API kqcode_t arch_file_delete_bak(ulint64 lsn);

/* ---- Validation ------------------------------------------------------------------------------ */

/* Checks one record by the rules of its type, with the disk, kqmal.ini and, with `timer_chk`,
 * kqtimer.ini. Null is valid. Of REALTIME and TIMELY it fills in two defaults, which stay when a
 * later rule fails: `wait_apply` from the registry's, or else 0 for REALTIME and 1 for TIMELY;
 * `arch_failover` 0. A missing directory of LOCAL or REMOTE is created and stays.
 *   ARCH_E_INVALID_DEST           no destination; a path too long, on DFS or not writable; a remote
 *                                 instance not named or not in kqmal.ini; ARCH_SEND_DELAY of a type
 *                                 that has none
 *   ARCH_E_PARA_NOT_ALLOWED       ARCH_FAILOVER of neither REALTIME nor TIMELY
 *   ARCH_E_INVALID_TYPE           a type outside 1 to 9
 *   ARCH_E_OUT_OF_SPACE           no room for one archive file
 *   ARCH_E_INVALID_SPACE_LIMIT, ARCH_E_INVALID_FLUSH_BUF_SIZE, ARCH_E_INVALID_FILE_SIZE,
 *   ARCH_E_INVALID_HANG_FLAG, ARCH_E_INVALID_SEND_DELAY    the value is out of range
 *   ARCH_E_INVALID_VALUE          no timer name; a cluster standby that waits for apply; a Raft
 *                                 member without address or with an id out of range; a subscriber
 *                                 value out of range
 *   ARCH_E_TIMER_NOT_FOUND        the timer is not in kqtimer.ini
 *   ARCH_E_MAL_NOT_CONFIGURED     MAL is off, or a TIMELY instance has no host or port there
 * What arch_cfg_inst_check_in_mal refuses is printed only. Lock: held; the probe of a directory
 * that takes no file pauses up to 30 times 100 ms under it. */
ARCH_CFG_API kqcode_t arch_cfg_validate(arch_cfg_t* arch, kqbool timer_chk, kqbool asm_path_chk)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* Checks a destination text of `type` against a registry (null: the process registry).
 *   ARCH_E_INVALID_DEST  null; silent
 *   ARCH_E_TOO_LONG      more than 256 characters for LOCAL, REMOTE and NONE, 128 else; silent
 *   ARCH_E_DEST_IS_SELF  this instance's name, ignoring case; printed only
 *   ARCH_E_DEST_EXISTS   a destination of the registry uses it already; silent
 *   ARCH_E_INVALID_PATH  LOCAL and REMOTE: no valid path name; printed only
 * Lock: held, if the process registry is searched. */
ARCH_CFG_API kqcode_t arch_cfg_check_dest_validate(arch_cfg_sys_t* cfg_sys, const schar* dest,
                                                   usint type);

/* Splits an instance list at "/", checks each name as above and stores it upper-case in
 * `dest_insts`; sets `n_inst`, and `dest` to the one name or to the empty text. A null list sets
 * `n_inst` 0. Blanks belong to the names; empty names and a name given twice are stored. What
 * `arch` itself holds does not count as in use.
 *   ARCH_E_INVALID_DEST    a name of more than 16 characters; printed only
 *   ARCH_E_TOO_MANY_INSTS  a 17th name; or two names of a SYNC record, whose `n_inst` is then set
 *                          already; silent
 *   any other              of arch_cfg_check_dest_validate for a name, and ARCH_E_TOO_LONG for a
 *                          piece of more than 128; logged as a code with its place
 * On failure the names before it are in `dest_insts`, and `n_inst` is as it was.
 * Lock: held, if the process registry is searched. */
ARCH_CFG_API kqcode_t arch_cfg_inst_dests_validate(arch_cfg_sys_t* cfg_sys, arch_cfg_t* arch,
                                                   const schar* dest);

/* Checks the process registry as a whole: counts and coexistence, Raft and XMAL settings, every
 * record (arch_cfg_validate), duplicates. On the way it settles defaults, which stay when a later
 * rule fails: the registry's `wait_apply` (0 with REALTIME, 1 with TIMELY, at the end of a good run
 * 0) and `hang_flag` 1 of the first LOCAL record. The first rule that fails decides the code.
 * Silent are those for counts (but not for LEARNER), for a missing LOCAL, for REALTIME beside
 * TIMELY, for SUBSCRIBE beside others, for several instances beside SYNC, for MPP, and for a path
 * or a remote instance used twice. More than 18 RAFT and LEARNER records together:
 * ARCH_E_TOO_MANY_RAFT. Lock: taken for the whole run, also while directories are probed
 * (arch_cfg_validate); kqmal.ini's own lock is taken inside it. */
ARCH_CFG_API kqcode_t arch_cfg_sys_validate(kqbool timer_chk, kqbool asm_path_chk)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* ARCH_E_INVALID_TYPE when the registry has a SYNC record, `sys_mode` is 2 (a standby database) and
 * there is neither REALTIME nor TIMELY; else 0. Lock: held. */
ARCH_CFG_API kqcode_t arch_cfg_sys_check_low(ulint sys_mode) KQ_REQUIRES(arch_cfg_sys.mutex);

/* 1 when the directory exists or was created now; a path of more than 256 characters or null is
 * not valid. With `asm_path_chk` 0 a path on ASM storage is valid unseen. Silent. Lock: none. */
ARCH_CFG_API kqbool arch_cfg_check_local_path_validate(const schar* dest, kqbool asm_path_chk);

/* The same, and a file can be created in it: a probe file .ARCHIVE_<hex>_<tick>.DAT is written and
 * deleted, up to 31 times with 100 ms between. Null or empty is not valid. Silent. Lock: none. */
ARCH_CFG_API kqbool arch_cfg_local_dest_check(const schar* dest, kqbool asm_path_chk);

/* Whether kqmal.ini knows every instance that a record names; with `dst_type` TIMELY also its host
 * and port. Always 0 when archiving is switched off. Printed only.
 *   ARCH_E_MAL_NOT_CONFIGURED  MAL is off in kq.ini, or host or port is missing
 *   ARCH_E_INVALID_DEST        an instance is not in kqmal.ini
 * Lock: none taken; held where the record is registered. */
ARCH_CFG_API kqcode_t arch_cfg_inst_check_in_mal(const arch_cfg_t* arch, usint dst_type);

/* Warns, at level 3 of the error log, about each instance of kqmal.ini but this one that no record
 * of the process registry names. 0; or ARCH_E_MAL_NOT_CONFIGURED when archiving is on and MAL off,
 * printed only. Lock: held; kqmal.ini's own lock is taken inside. */
ARCH_CFG_API kqcode_t mal_cfg_inst_check_in_arch(void) KQ_REQUIRES(arch_cfg_sys.mutex);

/* 1 when the registry is initialised (`has_inited`) and a TIMELY, REALTIME or ASYNC record names
 * several instances. Lock: none taken; held for a stable answer. */
ARCH_CFG_API kqbool arch_cfg_has_dsc_arch_dest(void);

/* 1 when there is a LOCAL or SYNC record. Lock: taken. */
ARCH_CFG_API kqbool arch_cfg_has_local_or_sync(void) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* ---- The subscriber -------------------------------------------------------------------------- */

/* Checks a subscriber's connection text, `[user[/password]@]server`: the server is localhost,
 * host:port, or a service of the client service configuration.
 *   ARCH_E_INVALID_DEST   null, empty, or an unknown service
 *   ARCH_E_INVALID_VALUE  no login text
 *   ARCH_E_INVALID_PORT   a port that is not 2 or more decimal digits up to 65535
 *   ARCH_E_DEST_IS_SELF   this instance's port on a local address
 * or a code of arch_cfg_check_subscb_svc. Silent. Lock: none. */
ARCH_CFG_API kqcode_t arch_cfg_check_subscb_dest(const schar* input);

/* Checks a service name: at least one service has it, ignoring case, and no address of any of them
 * is this instance. An address without a port has 5236, with an empty one 0.
 *   ARCH_E_INVALID_DEST   no such service
 *   ARCH_E_INVALID_PORT   an address whose port is not decimal or above 65535
 *   ARCH_E_DEST_IS_SELF   an address is this instance's port on a local host
 * or the code of a service configuration that cannot be read. Address lists of any length are read
 * whole; a host of more than 256 characters is not local. Silent. Lock: none. */
ARCH_CFG_API kqcode_t arch_cfg_check_subscb_svc(const schar* server);

/* ---- Online changes -------------------------------------------------------------------------- */

/* What a clause named: bits that arch_cfg_parse_sql sets. ARCH_MOD_IN_MOUNT stands for every
 * parameter without a bit of its own; TYPE and DEST have none. */
enum arch_cfg_mod {
    ARCH_MOD_FILE_SIZE = 0x001,
    ARCH_MOD_SPACE_LIMIT = 0x002,
    ARCH_MOD_RAFT_VOTE_INTERVAL = 0x004,
    ARCH_MOD_RECOVER_TIME = 0x008,
    ARCH_MOD_FAILOVER = 0x010,
    ARCH_MOD_SUBSCRIBE_MODE = 0x020,
    ARCH_MOD_THRESHOLD = 0x040,
    ARCH_MOD_SEND_DELAY = 0x080,
    ARCH_MOD_IN_MOUNT = 0x100
};

enum { ARCH_CLAUSE_DEST_MAX = 272 }; /* characters of a clause's DEST */

/* Parses an archive clause, `KEYWORD = value, KEYWORD = value`. Keywords and type words ignore
 * case, the last one given twice wins, and every keyword is accepted with every type. Blanks around
 * both sides are dropped. There is no quoting: a value has no comma, and may have further "=".
 *
 *   TYPE                       LOCAL, REALTIME, SYNC, ASYNC, TIMELY, REMOTE, RAFT, LEARNER or
 *                              SUBSCRIBE (not MARCH)
 *   DEST                       up to 272 characters, to `dest_org`
 *   INCOMING_PATH              up to 256 characters, to `timer_name` of the record
 *   ARCH_TIMER_NAME            up to 127 characters, to `timer_name` too: the later one wins
 *   FILE_SIZE, SPACE_LIMIT, ARCH_FLUSH_BUF_SIZE, ARCH_SEND_DELAY    a number, "+" allowed
 *   ARCH_RECOVER_TIME          a number, "+" allowed, within the key's bounds
 *   HANG_FLAG                  one digit, "+" allowed
 *   ARCH_SUBSCRIBE_MODE, ARCH_THRESHOLD_PER_SECOND    a number, "+" allowed; a record without a
 *                              type becomes SUBSCRIBE
 *   RAFT_VOTE_INTERVAL         a number: 0, or within the key's bounds and at least twice the
 *                              registry's heartbeat interval
 *   WAIT_APPLY, ARCH_FAILOVER  0 or 1
 *
 * FILE_SIZE, ARCH_SEND_DELAY and the subscriber's two numbers keep their low 16 bits: 65664 becomes
 * 128, so that a caller who shows what was asked for shows the record, not the clause.
 *
 *   arch_cfg_str        the clause; it is cut in place
 *   arch_cfg            reset with arch_init and an empty name, then filled; the caller's
 *   dest_org            at least 273 characters; untouched when the clause has no DEST
 *   mod_in_mount        bits are only set: the caller clears it before
 *   raft_vote_interval  4294967295 when the clause has none
 *
 *   ARCH_E_CLAUSE_SYNTAX           null or empty; a segment without keyword, "=" or value
 *   ARCH_E_CLAUSE_UNKNOWN_KEYWORD  an unknown keyword
 *   ARCH_E_INVALID_TYPE            an unknown type word
 *   ARCH_E_INVALID_NUMBER          negative, or no integer
 *   ARCH_E_VALUE_OUT_OF_RANGE      outside the bounds named above
 *   ARCH_E_INVALID_HANG_FLAG       HANG_FLAG is not one digit
 *   ARCH_E_TOO_LONG                DEST or INCOMING_PATH
 *   ARCH_E_TIMER_NAME_TOO_LONG     ARCH_TIMER_NAME
 * On an error what the segments before it gave stays; RAFT_VOTE_INTERVAL, WAIT_APPLY and
 * ARCH_FAILOVER also keep a value that is out of range. A value that is refused sets no bit. At the
 * end (but not after DEST was too long) ARCH_MOD_SEND_DELAY of a record that is not SUBSCRIBE sets
 * ARCH_MOD_IN_MOUNT as well. Silent. Lock: none. */
ARCH_CFG_API kqcode_t arch_cfg_parse_sql(schar* arch_cfg_str, arch_cfg_t* arch_cfg, schar* dest_org,
                                         usint* mod_in_mount, ulint* raft_vote_interval);

/* The adders. Each adds one destination to the process registry and rewrites kqarch.ini, as one
 * step under the lock: it applies its rules in order, generates the section's name
 * (arch_cfg_get_name, or the next number that no section has in any case), validates
 * (arch_cfg_validate with both checks on), links, writes. The new record is returned through the
 * last argument, null when it was not linked; when only the write fails, the record stays
 * registered and is returned, and the result is the write's code: nothing is undone.
 *
 * The record-taking adders register a copy of `arch_in`, whose `type`, instance list (or, for
 * SUBSCRIBE, values) the caller has filled in; `arch_in->name` receives the generated name also
 * when a later rule fails. A text of it that has no terminator is cut at its field's end; its
 * `link` is not read. With one instance `dest` of the copy is its name, with several empty.
 * Instance names are stored as they are given: upper case, as arch_cfg_inst_dests_validate makes
 * them, is what start-up reads back.
 *
 *   code                                  march  timely  timer  sync  subscribe  local  remote
 *   ARCH_E_SYNC_CONFLICT                    x      x       x     x                        x
 *   ARCH_E_NO_LOCAL                         x      x       x     x       x                x
 *   ARCH_E_REALTIME_TIMELY_CONFLICT         x      x
 *   ARCH_E_SUBSCRIBE_CONFLICT               x      x       x     x       x                x
 *   ARCH_E_TIMER_NOT_FOUND                                 x
 *   ARCH_E_TOO_MANY_... (8 of the type)     x      x       x     x     (1)        x       x
 *   ARCH_E_TOO_MANY_INSTS (`n_inst` > 16)   x      x       x     x       x
 *   ARCH_E_INVALID_TYPE (another `type`)    x      x       x     x       x
 *   ARCH_E_DEST_IS_SELF, ARCH_E_INVALID_DEST                             x        x       x
 *   ARCH_E_TOO_LONG (text, path or name)                                 x        x       x
 *   ARCH_E_DEST_EXISTS, ARCH_E_INVALID_PATH                                       x       x
 *   ARCH_E_INVALID_VALUE, ARCH_E_INVALID_PORT (the text)                 x
 *   ARCH_E_DUPLICATE_PATH                                                                 x
 *   ARCH_E_OUT_OF_MEMORY                    x      x       x     x       x        x       x
 * For REMOTE the count is ARCH_E_TOO_MANY_LOCAL. Then: what arch_cfg_validate returns; for a record
 * that would not come back from the file as it is, logged only and without the text,
 * ARCH_E_INVALID_DEST (a control character or an outer blank, a "/" in an instance name, no name),
 * ARCH_E_TOO_LONG (longer than start-up reads), ARCH_E_TOO_MANY_INSTS (several for SYNC) or
 * ARCH_E_INVALID_VALUE (WAIT_APPLY, ARCH_FAILOVER or ARCH_RECOVER_TIME outside its bounds); and
 * what arch_cfg_sys_write_to_file returns. Start-up has rules that no adder has: a name that
 * another destination uses, or this instance's own. All silent but where it says otherwise, and but
 * for what arch_cfg_check_dest_validate and arch_cfg_validate print. Lock: taken. */

/* REALTIME. SYNC beside several instances, no LOCAL, TIMELY exists, SUBSCRIBE exists, 8 exist. */
ARCH_CFG_API kqcode_t arch_cfg_add_march(arch_cfg_t* arch_in, arch_cfg_t** arch_out)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* TIMELY. SYNC beside several instances, no LOCAL, REALTIME exists, SUBSCRIBE exists, 8 exist. */
ARCH_CFG_API kqcode_t arch_cfg_add_timely(arch_cfg_t* arch_in, arch_cfg_t** arch_out)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* ASYNC. SYNC beside several instances, no LOCAL, SUBSCRIBE exists, timer unknown, 8 exist. */
ARCH_CFG_API kqcode_t arch_cfg_add_timer(arch_cfg_t* arch_in, arch_cfg_t** arch_out)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* SYNC. For each destination: it names several instances, SUBSCRIBE exists, it is REMOTE or RAFT.
 * Then ARCH_E_INVALID_TYPE, printed and logged, when `sys_mode` is 2 (a standby database) and there
 * is neither REALTIME nor TIMELY; no LOCAL; 8 exist. */
ARCH_CFG_API kqcode_t arch_cfg_add_sync(arch_cfg_t* arch_in, ulint sys_mode, arch_cfg_t** arch_out)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* SUBSCRIBE. No LOCAL, anything but LOCAL and SUBSCRIBE exists, SUBSCRIBE exists. `path` is the
 * connection text: trimmed in place, at most 128 characters (ARCH_E_TOO_LONG), checked
 * (arch_cfg_check_subscb_dest), and copied to `arch_in->dest`. `*arch_out` is written only when the
 * record is linked. */
ARCH_CFG_API kqcode_t arch_cfg_add_subscribe(arch_cfg_t* arch_in, schar* path,
                                             arch_cfg_t** arch_out) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* LOCAL. arch_cfg_check_dest_validate, arch_cfg_check_local_path_validate (ARCH_E_INVALID_DEST; a
 * missing directory is created and stays), 8 exist. Separators at the path's end are dropped. */
ARCH_CFG_API kqcode_t arch_cfg_add_local(const schar* path, ulint space_limit, usint file_size,
                                         usint hang_flag, ulint flush_buf_size,
                                         arch_cfg_t** cfg_out) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* REMOTE. SYNC exists, no LOCAL, 8 exist, SUBSCRIBE exists, `inst_name` is this instance (printed
 * only), arch_cfg_check_dest_validate of it, a LOCAL or REMOTE destination has the path, ignoring
 * case (ARCH_E_DUPLICATE_PATH), the path is no usable directory (ARCH_E_INVALID_DEST; a missing one
 * is created and stays). Separators at the path's end are dropped. `inst_name` is turned to upper
 * case in place. `hang_flag` is not used: REMOTE always has 1. */
ARCH_CFG_API kqcode_t arch_cfg_add_remote(const schar* path, schar* inst_name, ulint space_limit,
                                          usint file_size, usint hang_flag, ulint flush_buf_size,
                                          arch_cfg_t** arch_out) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* Whether a change of the registered record `old_arch` to `arch` may be applied, which the caller
 * then does. `arch` comes from arch_cfg_parse_sql with its `type` set to the one that the
 * destination is to have; `mod_in_mount` is what the clause named. Where the clause left it out,
 * `arch` is completed from `old_arch`: the timer (ASYNC, but not from REMOTE, and SUBSCRIBE), the
 * incoming path (REMOTE, in `timer_name`), the subscriber's three numbers. `dest_org` is used for
 * SUBSCRIBE only: a buffer of at least 257 characters, trimmed in place and replaced by the stored
 * text when empty. Null `arch` may be applied. On failure `arch` and `dest_org` may be completed
 * already.
 *
 *   ARCH_E_FAILOVER_WAIT_APPLY       ARCH_FAILOVER 1 beside WAIT_APPLY 1
 *   ARCH_E_PARA_NOT_ALLOWED          ARCH_FAILOVER of neither REALTIME nor TIMELY
 *   ARCH_E_INVALID_TYPE              to NONE, RAFT, LEARNER or above 9
 *   ARCH_E_TOO_MANY_...              8 others have the type (for SUBSCRIBE 2 others, which start-up
 *                                    never leaves)
 *   ARCH_E_REALTIME_TIMELY_CONFLICT  another record has the excluded type
 *   ARCH_E_MULTI_INST_DEST           to LOCAL, SYNC or REMOTE from several instances
 *   ARCH_E_NO_INCOMING_PATH, ARCH_E_SHARED_PATH_CHANGED    to REMOTE
 *   ARCH_E_MAL_NOT_CONFIGURED, ARCH_E_INVALID_DEST         the stored instances in kqmal.ini
 *   ARCH_E_INVALID_DEST              an incoming path that would not come back from the file as it
 *                                    is; logged only
 *   ARCH_E_NO_TIMER                  to ASYNC without a timer; printed only
 *   ARCH_E_TIMER_NOT_FOUND           the timer is not in kqtimer.ini
 *   ARCH_E_TOO_LONG                  a subscriber's text of more than 128 characters
 *   ARCH_E_INVALID_SEND_DELAY, ARCH_E_INVALID_VALUE        the subscriber's numbers; printed and
 *                                    logged
 *   ARCH_E_INVALID_SPACE_LIMIT, ARCH_E_INVALID_FILE_SIZE   to LOCAL or REMOTE
 *
 * or a code of arch_cfg_check_subscb_dest. Silent but where it says otherwise, and but for what
 * arch_cfg_inst_check_in_mal prints, whose code is logged with its place. Lock: held. */
ARCH_CFG_API kqcode_t arch_cfg_validate_for_modify(arch_cfg_t* arch, const arch_cfg_t* old_arch,
                                                   usint mod_in_mount, schar* dest_org)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* Drops the record that a text names (as arch_cfg_find_by_dest with flag 0 finds it) and rewrites
 * kqarch.ini. The text is compared as it is: a path that an adder was given with a "/" at its end
 * is stored without. ARCH_E_DEST_NOT_FOUND when there is none, or the text is null or empty; else
 * the result of the write, which undoes nothing. No rule looks at what remains: the last LOCAL may
 * go, and `raft_cnt` is not changed for a RAFT record. Silent. Lock: taken, from the search to the
 * written file. */
ARCH_CFG_API kqcode_t arch_cfg_drop(const schar* dest) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* The same for a record; ARCH_E_DEST_NOT_FOUND when the registry does not hold this very record.
 * Lock: taken, in spite of the name's ending. */
ARCH_CFG_API kqcode_t arch_cfg_drop_low(arch_cfg_t* dst_arch) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* ---- The cluster: what nodes tell one another ------------------------------------------------ */

/* A configuration message carries the archive paths of a node: every LOCAL and REMOTE destination,
 * in list order. Integers are little-endian, texts have no terminator, nothing is padded.
 *
 *   body length   4 bytes    of all that follows
 *   an entry      2 + P      path length P and path (`dest`), at most 256
 *                 2 + N      with names: name length N and name, at most 128: this instance's for
 *                            LOCAL, the remote instance's for REMOTE
 *
 * Instance A with LOCAL /arch and REMOTE /rarch of B, with names, is 25 bytes:
 *   15 00 00 00   05 00 "/arch" 01 00 "A"   06 00 "/rarch" 01 00 "B"
 *
 * Nothing in the message says whether it has names: both sides go by ARCH_LOCAL_SHARE. */

/* The number of bytes that arch_cfg_info_encode writes with the same `inst_check` (1: with names),
 * the body length included; 4 when there is nothing to tell. Lock: held, until it is encoded. */
ARCH_CFG_API ulint arch_cfg_info_len_calc(kqbool inst_check) KQ_REQUIRES(arch_cfg_sys.mutex);

/* Writes the message at `msg_buf + off`, where there is room for arch_cfg_info_len_calc bytes, and
 * returns how many. `buf_len` is not looked at. Lock: held. */
ARCH_CFG_API ulint arch_cfg_info_encode(byte* msg_buf, ulint off, ulint buf_len, kqbool inst_check)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* Checks a peer's message against the process registry. `msg_buf` is its first entry, behind the
 * body length, and `msg_len` that length. With `arch_local_share` exactly 1 the entries have names,
 * and every REMOTE destination here must stand in the message, the path with case and the name
 * without. Otherwise no path of the message may be a path here, and with more than one node in
 * kq.ini (HPC_NODE) nothing agrees. Temporary lists come from `env` and are gone on return.
 *   ARCH_E_PEER_CFG_MISMATCH   a destination is missing there, or nothing may be unshared; or the
 *                              message is malformed: a length past the end, a text too long or with
 *                              a control character, a byte left over
 *   ARCH_E_PEER_PATH_CONFLICT  a path is used by both
 *   ARCH_E_OUT_OF_MEMORY       the pool refused
 * Silent. Lock: held. */
ARCH_CFG_API kqcode_t arch_cfg_info_decode_and_check(kqenv_t env, const byte* msg_buf,
                                                     ulint msg_len, kqbool arch_local_share)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* 1 when two records agree in `name`, `type`, `n_inst`, `dest`, `space_limit`, `file_size`,
 * `hang_flag`, `flush_buf_size`, `timer_name`, `epno` and `arch_send_delay`, texts with case. Lock:
 * none taken; held where a record is registered. */
ARCH_CFG_API kqbool arch_cfg_cmp(const arch_cfg_t* cfg1, const arch_cfg_t* cfg2);

/* The REMOTE destinations, in list order: `data` of a node is the path (pathname_t), `flag` the
 * remote instance's name (sysname_t, cut to 128). Each entry is one block of the pool, freed by one
 * mem_free of the node, by the caller. ARCH_E_OUT_OF_MEMORY leaves `dest_lst` empty and nothing
 * held. Silent. Lock: held. */
ARCH_CFG_API kqcode_t arch_cfg_get_all_remote_dest(kqenv_t env, kq_lst_t* dest_lst)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* The LOCAL and REMOTE destinations, in list order; with `get_one_local` 1 only the first LOCAL.
 * Path, name and node are blocks of their own, freed each by the caller. `flag` is null unless
 * `arch_local_share` is 1; then it is this instance's name for LOCAL. Otherwise as above. */
ARCH_CFG_API kqcode_t arch_cfg_get_all_local_and_remote_dest(kqenv_t env, kq_lst_t* dest_lst,
                                                             kqbool arch_local_share,
                                                             kqbool get_one_local)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* Whether every other endpoint of this instance's cluster group, healthy or failed, has a REMOTE
 * destination. 0, at once with fewer than two nodes (HPC_NODE, 16 bits) or on DFS storage, leaves
 * `err_desc` and `err_len` as they are. Otherwise the result of kqerr_get_err_desc_with_langage,
 * which puts the text there:
 *   ARCH_E_EP_NO_REMOTE   with the endpoint's number in the group, for the first without one
 *   any other             of the cluster registry
 * Lock: held. */
ARCH_CFG_API kqcode_t arch_cfg_remote_all_other_ep_check(lint language, ulint* err_len,
                                                         schar* err_desc)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* The configuration-change guard (`arch_cfg_changing`): 256 while a change is under way, plus one
 * bit for each node 0 to 7 that has one. Nodes share it; the exclusive change, 255, shares it with
 * nobody. Nothing waits: a refused caller tries again when it likes.
 *   ARCH_E_CFG_CHANGING    another holder excludes this one; logged only, at level 2
 *   ARCH_E_INVALID_VALUE   8 to 254, which is nobody; silent
 * A node that holds it may take it again. Lock: taken. */
ARCH_CFG_API kqcode_t arch_set_cfg_changing(byte rac_seqno) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* Gives the guard back: a node its bit, and all when no node bit remains, also what is held
 * exclusively; 255 everything. 8 to 254 do nothing. Lock: taken. */
ARCH_CFG_API void arch_reset_cfg_changing(byte rac_seqno) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* The instances that a destination serves. */
typedef struct arch_collect_struct {
    usint n_rac; /* names in use, at most 16 */
    sysname_t inst_name_arr[ARCH_INST_MAX];
} arch_collect_t;

/* Adds the instance names of each destination that is not LOCAL to an entry of its own, in list
 * order, from entry `*n_arch` on, and moves `*n_arch` behind the last; a name that finds its entry
 * full is left out. The caller supplies an entry for each such destination, with `n_rac` 0, and for
 * those that others may add meanwhile.
 * Lock: taken. */
ARCH_CFG_API void arch_cfg_collect_inst_name(usint* n_arch, arch_collect_t* arch_collect)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* The paths of the REMOTE destinations and of the first LOCAL one, in list order, in a block of the
 * pool that the caller frees.
 *   ARCH_E_NO_ARCH_PATH    there is none; logged only
 *   ARCH_E_OUT_OF_MEMORY   logged as a code with its place; what was collected stays with the
 *                          caller
 * Lock: held. */
ARCH_CFG_API kqcode_t rarch_cfg_arch_path_get(kqenv_t env, ulint* n_arch_path,
                                              pathname_t** arch_path_arr)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* Appends a path (cut to 256) to an array of `*n_arch_path` in use and `*arr_size` allocated, which
 * grows by 16 when it is full. ARCH_E_OUT_OF_MEMORY leaves all as it was; silent. Lock: none. */
ARCH_CFG_API kqcode_t rarch_cfg_arch_path_arr_fill(kqenv_t env, ulint* arr_size, ulint* n_arch_path,
                                                   pathname_t** arch_path_arr,
                                                   const schar* arch_path);

/* The first REMOTE record of a remote instance, ignoring case, or null. The second asks kqmal.ini
 * for the name of a site; null while the registry is not initialised (`has_inited`).
 * Lock: held. */
ARCH_CFG_API arch_cfg_t* arch_cfg_find_remote_by_inst_name(const schar* inst_name)
    KQ_REQUIRES(arch_cfg_sys.mutex);
ARCH_CFG_API arch_cfg_t* arch_cfg_find_remote_by_mal_seqno(usint mal_seqno)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* Removes the first record whose `epno` is `ep_no`, if there is one. The file is not rewritten.
 * Lock: taken. */
ARCH_CFG_API void arch_cfg_sys_destroy_one_ep(usint ep_no) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* ---- Raft membership ------------------------------------------------------------------------- */

/* The operations below change the registry; but for arch_delete_raft_info none writes kqarch.ini.
 * Those with `rec` leave the new text of the whole file there, made under the same hold of the
 * lock, for the caller to persist (arch_cfg_sys_write_by_rec). `rec` has room for
 * ARCH_CFG_TEXT_SIZE characters, or is null; it is empty on failure. When only the text does not
 * fit, the change is made and the result is ARCH_E_OUT_OF_MEMORY instead of 0. Refusals are logged
 * only, at level 4, changes at level 2; names ignore case, and do not lie in a record. */

/* Adds a RAFT or LEARNER member: section ARCHIVE_<dest>. `raft_cnt` is not changed. `ip` may be
 * null for none. Returns the record through `arch_out`, null when it was not added. The name also
 * goes to `dest_insts`, upper-case as start-up reads it; one of more than 16 characters does not:
 * it is added, but start-up reads none. In this order:
 *   ARCH_E_INVALID_TYPE      `arch_type` is neither
 *   ARCH_E_TOO_MANY_LEARNER, ARCH_E_TOO_MANY_RAFT   9 LEARNER or 8 RAFT exist
 *   ARCH_E_TOO_LONG          `dest` has more than 120 characters
 *   ARCH_E_INVALID_VALUE     `dest` is empty or could not stand in the file (a control character,
 *                            an outer blank, "/", STANDBY_ARCHIVE), or `ip` could not (more than
 *                            64 characters)
 *   any                      of arch_cfg_validate_raft_info
 *   ARCH_E_OUT_OF_MEMORY
 *   any                      of arch_cfg_validate, without timers and without probing ASM storage
 * Lock: taken. */
ARCH_CFG_API kqcode_t arch_cfg_add_learner_or_raft(const schar* dest, const schar* ip, usint port,
                                                   usint dest_id, usint center_id, usint arch_type,
                                                   arch_cfg_t** arch_out, schar* rec)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* Checks a new member against this node and then against each destination, in list order.
 *   ARCH_E_TOO_LONG         `dest` has more than 128 characters
 *   ARCH_E_DEST_IS_SELF     `dest` is this instance
 *   ARCH_E_DUPLICATE_NAME   a section has the name `arch_name`
 *   ARCH_E_DEST_EXISTS      a member has the name `dest`
 *   ARCH_E_INVALID_VALUE    this node or a member has the address and port, or the id; or a
 *                           destination is neither LOCAL nor a member (silent)
 * `arch_name` and `dest` are not null. Lock: held. */
ARCH_CFG_API kqcode_t arch_cfg_validate_raft_info(const schar* arch_name, const schar* dest,
                                                  const schar* ip, usint port, usint dest_id)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* Changes the address of this node (XMAL_IP, XMAL_PORT) or of a member; a null address empties it.
 * Always 0: an unknown name changes nothing, and an address that could not stand in the file
 * leaves the old address and port, and is logged. Lock: held. */
ARCH_CFG_API kqcode_t arch_cfg_update_raft_info(const schar* dest_name, const schar* new_xmal_ip,
                                                usint new_xmal_port)
    KQ_REQUIRES(arch_cfg_sys.mutex);

/* The id of this node (`raft_self_id`) or of a member; 65535 for an unknown name. Lock: held. */
ARCH_CFG_API usint arch_cfg_find_dest_id_by_name(const schar* dest) KQ_REQUIRES(arch_cfg_sys.mutex);

/* Whether a name, which is not null, is a member of a type: RAFT, LEARNER, or 0 for either. This
 * instance counts as a voting member.
 *   ARCH_E_RAFT_DEST_TOO_LONG   more than 128 characters
 *   ARCH_E_DEST_NOT_FOUND       no destination has the name
 *   ARCH_E_NOT_RAFT_MEMBER      asked for either, it is neither
 *   ARCH_E_NOT_LEARNER          asked for a LEARNER, it is none
 *   ARCH_E_RAFT_TYPE_MISMATCH   asked for another type, it is not of it; asked for a LEARNER, it is
 *                               this instance
 * Lock: taken. */
ARCH_CFG_API kqcode_t arch_cfg_check_raft_dest_validate(const schar* dest, usint arch_type)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* A learner leaves: its record is removed. An unknown name is no error. `dest_id` is not looked at,
 * `raft_cnt` not changed. 0. Lock: taken. */
ARCH_CFG_API kqcode_t arch_cfg_delete_learner(const schar* dest_name, usint dest_id, schar* rec)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* A voter leaves, likewise; the caller follows with arch_cfg_set_raft_cnt. 0. Lock: taken. */
ARCH_CFG_API kqcode_t arch_cfg_delete_raft(const schar* dest_name) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* The voters become those of a list, which names this node too: RAFT records that it does not name
 * are removed, none is added, and `raft_cnt` becomes the list's length less 1.
 * ARCH_E_INVALID_VALUE, silent and nothing changed, for an empty or null list. Lock: taken. */
ARCH_CFG_API kqcode_t arch_cfg_change_to_new(usint new_node_num, sysname_t* new_node_arr,
                                             schar* rec) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* The learners that a list names become voters; when it names this node, `raft_learner` becomes 0.
 * Who is a voter already stays one. The ids of the promoted learners go to `learner_id_arr` and
 * their number to `n_learner`; the first may be null, or both. `raft_cnt` is not changed.
 *   ARCH_E_DEST_NOT_FOUND   at the first name that is nobody's: the promotions before it stay
 *   ARCH_E_INVALID_VALUE    a null list of more than no names; silent
 * Lock: taken. */
ARCH_CFG_API kqcode_t arch_cfg_change_learner_to_raft(usint new_node_num, sysname_t* new_node_arr,
                                                      schar* rec, usint* n_learner,
                                                      usint* learner_id_arr)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

/* Sets `raft_cnt` to the number of RAFT records. Lock: taken. */
ARCH_CFG_API void arch_cfg_set_raft_cnt(void) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* Clears this node's Raft settings: `raft_hb_interval`, `raft_vote_interval`, `raft_pkg_interval`,
 * `xmal_port` and `self_center_id` 0, `xmal_hb_interval` 4294967295, `raft_self_id` 65535,
 * `xmal_ip` empty. 0. Lock: taken. */
ARCH_CFG_API kqcode_t arch_cfg_sys_delete_raft_info(void) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* Ends the Raft group here: every member is removed, the settings cleared, `raft_cnt` 0, and
 * kqarch.ini rewritten, whose result is returned; `raft_learner` stays. Lock: taken. */
ARCH_CFG_API kqcode_t arch_delete_raft_info(void) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* Replaces this node's Raft settings (`xmal_ip` cut to 64 characters, null for none; the centre id
 * cut to 16 bits) and validates the whole registry (arch_cfg_sys_validate, both checks off). When
 * that refuses, the settings are cleared, not restored, and its code is returned.
 * ARCH_E_INVALID_VALUE, and nothing changed, for an address that could not stand in the file. The
 * bounds of the keys are not looked at. Lock: taken. */
ARCH_CFG_API kqcode_t arch_cfg_sys_update_raft_info(
    ulint raft_hb_interval, ulint raft_vote_interval, ulint xmal_hb_interval, const schar* xmal_ip,
    usint xmal_port, ulint raft_self_id, ulint raft_center_id) KQ_EXCLUDES(arch_cfg_sys.mutex);

/* Sets `raft_vote_interval`. Lock: taken. */
ARCH_CFG_API void arch_cfg_sys_set_raft_vote_interval(ulint raft_vote_interval)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

KQ_END_C

#endif
