/* The INI module's share: the table of kqarch.ini's keys, and the reader of the file. */
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <sys/stat.h>

#include "arch_cfg.h"
#include "elog.h"
#include "ini.h"

static struct {
    ulint index;
    other_ini_alterable_t key;
} rows[] = {
#define TEXT(index, name) {index, {name, 1, 0, 0, name " = %s\n"}},
#define NUMBER(index, name, least, most) {index, {name, 0, most, least, name " = %u\n"}},
    TEXT(ini_index_arch_type, "ARCH_TYPE") TEXT(ini_index_arch_dest, "ARCH_DEST") TEXT(
        ini_index_arch_timer_name, "ARCH_TIMER_NAME") NUMBER(ini_index_arch_file_size,
                                                             "ARCH_FILE_SIZE", 64, 2048)
        NUMBER(ini_index_arch_space_limit, "ARCH_SPACE_LIMIT", 1024, 2147483647) NUMBER(
            ini_index_arch_hang_flag, "ARCH_HANG_FLAG", 0,
            1) NUMBER(ini_index_arch_timely_wait_apply, "ARCH_WAIT_APPLY", 0,
                      1) NUMBER(ini_index_arch_reserve_time, "ARCH_RESERVE_TIME", 0,
                                4294967294) TEXT(ini_index_incoming_path, "ARCH_INCOMING_PATH")
            NUMBER(ini_index_arch_flush_buf_size, "ARCH_FLUSH_BUF_SIZE", 0, 128) NUMBER(
                ini_index_xmal_hb_interval, "XMAL_HB_INTERVAL", 1,
                1800) NUMBER(ini_index_raft_hb_interval, "RAFT_HB_INTERVAL", 1,
                             1800) NUMBER(ini_index_raft_vote_interval, "RAFT_VOTE_INTERVAL", 2,
                                          3600) TEXT(ini_index_arch_dest_ip, "ARCH_DEST_IP")
                NUMBER(ini_index_arch_dest_port, "ARCH_DEST_PORT", 1, 65535) TEXT(
                    ini_index_xmal_ip, "XMAL_IP") NUMBER(ini_index_xmal_port, "XMAL_PORT", 1, 65535)
                    NUMBER(ini_index_arch_local_share, "ARCH_LOCAL_SHARE", 0, 1) NUMBER(
                        ini_index_arch_local_share_check, "ARCH_LOCAL_SHARE_CHECK",
                        0, 1) NUMBER(ini_index_arch_send_delay, "ARCH_SEND_DELAY", 0,
                                     1440) NUMBER(ini_index_raft_self_id, "RAFT_SELF_ID", 0, 65534)
                        NUMBER(ini_index_arch_dest_id, "ARCH_DEST_ID", 0, 65534) NUMBER(
                            ini_index_raft_learner, "RAFT_LEARNER", 0,
                            1) NUMBER(ini_index_arch_wait_apply, "WAIT_APPLY", 0, 1)
                            NUMBER(ini_index_arch_recover_time, "ARCH_RECOVER_TIME", 0, 86400)
                                NUMBER(ini_index_raft_pkg_interval, "RAFT_PKG_INTERVAL", 1, 60000)
                                    NUMBER(ini_index_self_center_id, "SELF_CENTER_ID", 0, 65534)
                                        NUMBER(ini_index_arch_center_id, "ARCH_CENTER_ID", 0, 65534)
                                            NUMBER(ini_index_arch_failover, "ARCH_FAILOVER", 0,
                                                   1) NUMBER(ini_index_arch_subscribe_mode,
                                                             "ARCH_SUBSCRIBE_MODE", 0, 1)
                                                NUMBER(ini_index_arch_threshold_per_second,
                                                       "ARCH_THRESHOLD_PER_SECOND", 0, 65535)
                                                    TEXT(ini_index_arch_recv_path, "ARCH_RECV_PATH")
                                                        NUMBER(ini_index_arch_asm_mirror,
                                                               "ARCH_ASM_MIRROR", 1, 3)
                                                            NUMBER(ini_index_arch_asm_striping,
                                                                   "ARCH_ASM_STRIPING", 0, 256)};
enum { ROW_COUNT = sizeof rows / sizeof *rows };

lint ini_get_other_ini_array_index(const schar* para_name) {
    for (int i = 0; para_name != NULL && i < ROW_COUNT; ++i)
        if (strcasecmp(rows[i].key.para_name, para_name) == 0) return (lint)rows[i].index;
    return -1;
}

other_ini_alterable_t* ini_get_other_ini_info_by_index(ulint index) {
    for (int i = 0; i < ROW_COUNT; ++i)
        if (rows[i].index == index) return &rows[i].key;
    return NULL;
}

/* Exactly what strtoul reads whole, without the sign and the blanks that it would skip. */
kqbool ini_is_integer(const schar* text) {
    if (text == NULL || *text < '0' || *text > '9' || strncmp(text, "0X", 2) == 0) return 0;
    schar* end;
    errno = 0;
    unsigned long value = strtoul(text, &end, 0);
    return *end == '\0' && errno == 0 && value <= 4294967295u;
}

/* ---- Reading --------------------------------------------------------------------------------- */

static schar* trimmed(schar* text) {
    text += strspn(text, " \t\r");
    size_t length = strlen(text);
    while (length > 0 && strchr(" \t\r", text[length - 1]) != NULL)
        --length;
    text[length] = '\0';
    return text;
}

/* Hands one line to the module. `name` is set to what the line is about, never to a value: that may
 * hold a password. */
static kqcode_t hand_over(schar* line, arch_cfg_t** section, const schar** name) {
    line = trimmed(line);
    *name = "a line that is none";
    if (*line == '\0' || *line == '#' || *line == ';') return 0;
    size_t length = strlen(line);
    if (*line == '[') {
        if (length < 2 || line[length - 1] != ']') return ARCH_E_INVALID_VALUE;
        line[length - 1] = '\0';
        *name = trimmed(line + 1);
        return arch_cfg_create(NULL, *name, section);
    }
    schar* equals = strchr(line, '=');
    if (equals == NULL || equals == line) return ARCH_E_INVALID_VALUE;
    *equals = '\0';
    *name = trimmed(line);
    return arch_cfg_add_value(NULL, *section, *name, trimmed(equals + 1));
}

static FILE* open_regular(const schar* path) {
    struct stat status;
    if (stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return NULL;
    return fopen(path, "re");
}

kqcode_t ini_read_other_info_for_posix(const schar* path, ulint which) {
    FILE* file = which == INI_READ_ARCH ? open_regular(path) : NULL;
    if (file == NULL) return ARCH_E_FILE_OPEN;
    arch_cfg_t* section = NULL;
    schar* line = NULL;
    size_t size = 0;
    ssize_t length;
    kqcode_t code = 0;
    for (int number = 1; code >= 0 && (length = getline(&line, &size, file)) >= 0; ++number) {
        const schar* name = "a NUL byte";
        schar* text = line;
        if (number == 1 && strncmp(text, "\xef\xbb\xbf", 3) == 0) text += 3;
        if (length > 0 && line[length - 1] == '\n') line[--length] = '\0';
        code =
            strlen(line) < (size_t)length ? ARCH_E_INVALID_VALUE : hand_over(text, &section, &name);
        if (code < 0)
            aq_fprintf_inner(stderr, "kqarch.ini:%d: %s refused, code %d\n", number, name, code);
    }
    if (code >= 0 && ferror(file)) code = ARCH_E_FILE_OPEN;
    free(line);
    fclose(file);
    return code;
}
