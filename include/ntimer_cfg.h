/* The timer registry, read from kqtimer.ini. */
#ifndef NTIMER_CFG_H
#define NTIMER_CFG_H

#include "kqtype.h"

KQ_BEGIN_C

typedef struct ntimer_cfg_struct {
    sysname_t name;
} ntimer_cfg_t;

/* The timer of that name, ignoring case, or null. Borrowed. */
ntimer_cfg_t* ntimer_cfg_find_by_name(const schar* name);

KQ_END_C

#endif
