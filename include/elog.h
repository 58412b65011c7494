/* The error log and the console printer. */
#ifndef ELOG_H
#define ELOG_H

#include <stdio.h>

#include "kqtype.h"

KQ_BEGIN_C

enum elog_level {
    ELOG_CHANGE = 2,  /* a change that was made, or a recovery */
    ELOG_WARNING = 3, /* something to look at; nothing failed */
    ELOG_REFUSAL = 4  /* a request or a configuration was refused */
};

/* One line in the error log. A line feed at the text's end is dropped; any other control
 * character is shown as \xNN, so that no text starts a line of its own. */
void elog_report_ex(ulint level, const schar* format, ...) KQ_PRINTF(2, 3);

/* Records a result code with the place that raised it, at level 4:
 * "code -951 raised at cfg_dll/arch_cfg:LINE". */
void elog_try_report_kqerr(kqcode_t code, const schar* file, ulint line);

/* Prints on the console; `stream` is stderr or stdout. */
void aq_fprintf_inner(FILE* stream, const schar* format, ...) KQ_PRINTF(2, 3);

/* The text of `code` in `language` (0 is English), filled with `n_para` parameters of type
 * `const schar*`. `err_desc` holds at least 512 characters and is always terminated; `err_len`
 * receives the length. Either may be null. Returns `code`. */
kqcode_t kqerr_get_err_desc_with_langage(kqcode_t code, lint language, ulint* err_len,
                                         schar* err_desc, ulint n_para, ...);

/* The stand-in layer's log file: appended to, created with mode 0600, every line flushed; a line
 * reads "2026-01-31 12:00:00.000 [LEVEL] text". Closed, log lines are dropped.
 * 0, or -140 when the file cannot be opened (the log is then closed). */
kqcode_t elog_open(const schar* path);
void elog_close(void);

KQ_END_C

#endif
