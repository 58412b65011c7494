/* A server that uses the archive configuration: it starts up, two threads look destinations up
 * while a third adds and drops them by clause, and at the end the written file is printed.
 *
 *   embed DIRECTORY      the directory of kqarch.ini */
#include <pthread.h>
#include <stdatomic.h>
#include <string.h>

#include "arch_cfg.h"
#include "server.h"

enum { ROUNDS = 50 };

static atomic_int changes_are_done;

/* ---- Looking up ------------------------------------------------------------------------------ */

/* Every look-up under the lock: a record is safe to read while it is held. STANDBY1 is always
 * there; STANDBY2 comes and goes, and whoever sees it sees it whole. */
static void* look_up(void* unused) {
    (void)unused;
    long wrong = 0;
    do {
        arch_cfg_sys_enter();
        const arch_cfg_t* first = arch_cfg_find_by_dest_low_without_enter(NULL, "standby1");
        const arch_cfg_t* second = arch_cfg_find_by_dest_low_without_enter(NULL, "STANDBY2");
        if (first == NULL || first->type != ARCH_TYPE_REALTIME) ++wrong;
        if (second != NULL && strcmp(second->dest, "STANDBY2") != 0) ++wrong;
        arch_cfg_sys_exit();
    } while (!atomic_load(&changes_are_done));
    return (void*)wrong;
}

/* ---- Changing -------------------------------------------------------------------------------- */

/* The instances of a clause go into the record as they do when the file is read, beside a registry
 * that is empty: whether a name is in use elsewhere is not asked here. */
static kqcode_t add_standby(arch_cfg_t* asked, const char* instances) {
    arch_cfg_sys_t nobody;
    memset(&nobody, 0, sizeof nobody);
    kqcode_t code = arch_cfg_inst_dests_validate(&nobody, asked, instances);
    if (code < 0) return code;
    arch_cfg_t* added = NULL;
    switch (asked->type) {
        case ARCH_TYPE_REALTIME:
            return arch_cfg_add_march(asked, &added);
        case ARCH_TYPE_TIMELY:
            return arch_cfg_add_timely(asked, &added);
        case ARCH_TYPE_ASYNC:
            return arch_cfg_add_timer(asked, &added);
        default:
            return ARCH_E_INVALID_TYPE;
    }
}

/* What a statement `ADD ARCHIVE '...'` does. */
static kqcode_t add_by_clause(const char* statement) {
    char clause[512];
    char dest[ARCH_CLAUSE_DEST_MAX + 1] = "";
    arch_cfg_t asked;
    arch_cfg_t* added = NULL;
    usint named = 0;
    ulint vote_interval;

    snprintf(clause, sizeof clause, "%s", statement); /* it is cut in place */
    kqcode_t code = arch_cfg_parse_sql(clause, &asked, dest, &named, &vote_interval);
    if (code < 0) return code;
    if (asked.type == ARCH_TYPE_LOCAL)
        return arch_cfg_add_local(dest, asked.space_limit, (usint)asked.file_size, asked.hang_flag,
                                  asked.flush_buf_size, &added);
    return add_standby(&asked, dest);
}

/* One change of the configuration at a time; another node's, too, would be kept out. */
static kqcode_t change(const char* statement, const char* drop) {
    kqcode_t code = arch_set_cfg_changing(255);
    if (code < 0) return code;
    code = statement != NULL ? add_by_clause(statement) : arch_cfg_drop(drop);
    arch_reset_cfg_changing(255);
    return code;
}

static void* change_destinations(void* unused) {
    (void)unused;
    long failed = 0;
    for (int round = 0; round < ROUNDS; ++round) {
        if (change("TYPE = REALTIME, DEST = STANDBY2, WAIT_APPLY = 1", NULL) != 0) ++failed;
        if (change(NULL, "STANDBY2") != 0) ++failed;
    }
    if (change("TYPE=LOCAL, DEST=second, FILE_SIZE=64, SPACE_LIMIT=2048", NULL) != 0) ++failed;
    if (change("TYPE=ASYNC, DEST=standby2, ARCH_TIMER_NAME=NIGHTLY", NULL) != 0) ++failed;
    if (change("TYPE=REALTIME, DEST=STRANGER", NULL) != ARCH_E_INVALID_DEST) ++failed;
    atomic_store(&changes_are_done, 1);
    return (void*)failed;
}

/* ---- The server's life ----------------------------------------------------------------------- */

static long run_threads(void) {
    void* (*const work[])(void*) = {look_up, look_up, change_destinations};
    pthread_t threads[3];
    long wrong = 0;
    for (int i = 0; i < 3; ++i)
        if (pthread_create(&threads[i], NULL, work[i], NULL) != 0) return 1;
    for (int i = 0; i < 3; ++i) {
        void* result = NULL;
        pthread_join(threads[i], &result);
        wrong += (long)result;
    }
    return wrong;
}

static void print_file(const char* directory) {
    char path[KQ_PATHNAME_MAX + 16];
    snprintf(path, sizeof path, "%s/kqarch.ini", directory);
    FILE* file = fopen(path, "r");
    for (int c; file != NULL && (c = fgetc(file)) != EOF;)
        putchar(c);
    if (file != NULL) fclose(file);
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: embed DIRECTORY\n");
        return 2;
    }
    set_configuration_directory(argv[1]);
    kqcode_t code = arch_cfg_sys_init(NULL, 1, 1);
    if (code < 0) {
        fprintf(stderr, "embed: kqarch.ini is refused, code %d\n", code);
        return 1;
    }
    arch_cfg_sys_get()->has_inited = 1; /* queries may come now */
    arch_cfg_sys_release();

    arch_file_gen_bak(1);
    long wrong = run_threads();
    print_file(argv[1]);
    arch_cfg_sys_destroy();

    printf("Log:\n");
    print_log(stdout);
    printf("Wrong answers: %ld, blocks held: %ld\n", wrong, blocks_held());
    return wrong != 0 || blocks_held() != 0;
}
