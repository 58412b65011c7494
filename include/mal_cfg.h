/* The communication (MAL) registry, read from kqmal.ini: which instances this one talks to. */
#ifndef MAL_CFG_H
#define MAL_CFG_H

#include "kqtype.h"

KQ_BEGIN_C

typedef struct mal_cfg_struct {
    sysname_t inst_name;
    schar inst_ip[65]; /* MAL_INST_HOST; empty when not configured */
    usint inst_port;   /* MAL_INST_PORT; 0 when not configured */
} mal_cfg_t;

typedef struct mal_cfg_sys_struct {
    usint n_mal;
    mal_cfg_t* mal_arr; /* n_mal entries, in file order: the place is the site number */
} mal_cfg_sys_t;

/* The entry of an instance, ignoring case, or null. Borrowed; takes no lock. */
mal_cfg_t* mal_cfg_get_by_inst_name(const schar* inst_name);

/* The instance name of a site number, or null. Borrowed; takes no lock. */
schar* mal_cfg_get_inst_name_by_site(usint mal_seqno);

/* The registry, never null, and its own lock. Where the archive registry's lock is held too, it is
 * taken first and this one second. */
void mal_cfg_sys_enter(void);
mal_cfg_sys_t* mal_cfg_sys_get(void);
void mal_cfg_sys_exit(void);

KQ_END_C

#endif
