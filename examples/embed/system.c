/* What the module asks of the operating system's layer: memory, the mutex, time, files, the log. */
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <time.h>
#include <unistd.h>

#include "elog.h"
#include "mem.h"
#include "os.h"
#include "osfile.h"
#include "osmutex.h"
#include "server.h"

/* ---- os.h, mem.h: this server's allocator counts its blocks ---------------------------------- */

static atomic_long held;

long blocks_held(void) {
    return held;
}

void* os_malloc(ulint64 size) {
    void* block = malloc(size > 0 ? size : 1);
    if (block != NULL) ++held;
    return block;
}

void os_free(void* block) {
    if (block != NULL) --held;
    free(block);
}

/* One pool for all: a server with pools of its own would take the block from `env`. */
void* mem_malloc_ex(kqenv_t env, ulint64 size, const schar* file, ulint line) {
    (void)env, (void)file, (void)line;
    return os_malloc(size);
}

void mem_free(kqenv_t env, void* block) {
    (void)env;
    os_free(block);
}

void os_thread_sleep_low(ulint milliseconds) {
    struct timespec rest = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
}

ulint64 kq_get_tick_count(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (ulint64)now.tv_sec * 1000 + (ulint64)now.tv_nsec / 1000000;
}

void kq_sys_halt(const schar* text, lint code) {
    fprintf(stderr, "halted: %s (%d)\n", text, code);
    abort();
}

/* ---- osmutex.h: the module locks the_mutex itself -------------------------------------------- */

void os_mutex2_create(os_mutex_t* mutex) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&mutex->the_mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

/* A server that checks its lock order would keep the level. */
void os_mutex2_set_level(os_mutex_t* mutex, ulint level) {
    (void)mutex, (void)level;
}

void os_mutex2_free(os_mutex_t* mutex) {
    pthread_mutex_destroy(&mutex->the_mutex);
}

/* ---- elog.h: the log is kept in memory ------------------------------------------------------- */

static pthread_mutex_t log_mutex = PTHREAD_MUTEX_INITIALIZER;
static char log_text[16384];
static size_t log_length;

static void append_to_log(char level, const char* line) {
    pthread_mutex_lock(&log_mutex);
    int length = snprintf(log_text + log_length, sizeof log_text - log_length, "[%c] %.*s\n", level,
                          (int)strcspn(line, "\n"), line);
    if (length > 0 && (size_t)length < sizeof log_text - log_length) log_length += (size_t)length;
    pthread_mutex_unlock(&log_mutex);
}

void elog_report_ex(ulint level, const schar* format, ...) {
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    append_to_log((char)('0' + level % 10), line);
}

void elog_try_report_kqerr(kqcode_t code, const schar* file, ulint line) {
    elog_report_ex(ELOG_REFUSAL, "code %d raised at %s:%u", code, file, line);
}

void print_log(FILE* stream) {
    fwrite(log_text, 1, log_length, stream);
}

/* Where an administrator sits in front of the console; here it goes into the log as well. */
void aq_fprintf_inner(FILE* stream, const schar* format, ...) {
    char line[1024];
    va_list arguments;
    (void)stream;
    va_start(arguments, format);
    vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    append_to_log('c', line);
}

kqcode_t kqerr_get_err_desc_with_langage(kqcode_t code, lint language, ulint* err_len,
                                         schar* err_desc, ulint n_para, ...) {
    char text[64];
    (void)language, (void)n_para;
    int length = snprintf(text, sizeof text, "archive configuration error %d", code);
    if (err_desc != NULL) strcpy(err_desc, text);
    if (err_len != NULL) *err_len = (ulint)length;
    return code;
}

/* ---- osfile.h: files, of which this server has no special storage ---------------------------- */

kqbool os_file_path_is_asm(const schar* path) {
    return path != NULL && path[0] == '+';
}

kqbool os_file_path_is_dfs(const schar* path) {
    return path != NULL && strncmp(path, "dfs:", 4) == 0;
}

kqbool os_file_is_exist(const schar* path) {
    struct stat status;
    return lstat(path, &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

kqbool os_dir_is_exist(const schar* path) {
    struct stat status;
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

kqbool os_dir_create(const schar* path) {
    char part[4096];
    if (os_file_path_is_asm(path) || os_file_path_is_dfs(path)) return 0;
    if (snprintf(part, sizeof part, "%s", path) >= (int)sizeof part) return 0;
    for (char* next = strchr(part + 1, '/'); next != NULL; next = strchr(next + 1, '/')) {
        *next = '\0';
        mkdir(part, 0750);
        *next = '/';
    }
    return mkdir(part, 0750) == 0 || os_dir_is_exist(part);
}

/* Exclusively: never a file that another made, never through a link. */
os_handle_t os_file_create_normal(const schar* path) {
    return open(path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
}

void os_file_close_normal(os_handle_t handle) {
    close(handle);
}

os_handle_t os_file_create_with_init(const schar* path, ulint size, ulint access, ulint purpose) {
    (void)access, (void)purpose;
    os_handle_t file = os_file_create_normal(path);
    if (file < 0 || posix_fallocate(file, 0, size) == 0) return file;
    close(file);
    unlink(path);
    return OS_HANDLE_INVALID;
}

void os_file_close(os_handle_t handle) {
    close(handle);
}

kqbool os_file_delete(const schar* path) {
    return unlink(path) == 0;
}

static int copy_bytes(int from, int to) {
    char block[65536];
    ssize_t length;
    while ((length = read(from, block, sizeof block)) > 0)
        if (write(to, block, (size_t)length) != length) return 0;
    return length == 0;
}

/* Under another name first, then into place: nobody sees a half copy. */
kqbool os_file_copy(const schar* source, const schar* target, kqbool replace) {
    char made[4096];
    struct stat status;
    if (snprintf(made, sizeof made, "%s.tmp", target) >= (int)sizeof made) return 0;
    int from = open(source, O_RDONLY | O_CLOEXEC);
    int to = from >= 0 ? os_file_create_normal(made) : -1;
    kqbool copied = to >= 0 && fstat(from, &status) == 0 && copy_bytes(from, to) &&
                    fchmod(to, status.st_mode & 07777) == 0 && fsync(to) == 0;
    if (from >= 0) close(from);
    if (to >= 0) close(to);
    if (copied) copied = (replace ? rename(made, target) : link(made, target)) == 0;
    if (to >= 0 && (!copied || !replace)) unlink(made);
    return copied;
}

lint os_file_check_overflow(const schar* path, byte mirror, ulint64 bytes) {
    char part[4096];
    struct statvfs space;
    (void)mirror;
    if (os_file_path_is_asm(path)) return 0;
    if (snprintf(part, sizeof part, "%s", path) >= (int)sizeof part) return 1;
    while (!os_dir_is_exist(part)) { /* the nearest directory that is there */
        char* last = strrchr(part, '/');
        if (last == NULL)
            strcpy(part, ".");
        else if (last == part)
            strcpy(part, "/");
        else
            *last = '\0';
    }
    return statvfs(part, &space) != 0 || (ulint64)space.f_bavail * space.f_frsize < bytes;
}
