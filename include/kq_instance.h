/* The stand-in layer: opening an instance directory, and walking the lines of an INI file. */
#ifndef KQ_INSTANCE_H
#define KQ_INSTANCE_H

#include "kqtype.h"

KQ_BEGIN_C

/* Reads kq.ini in `config_dir` and, where it switches them on, kqmal.ini, kqtimer.ini, kqdcr.ini
 * and kqsvc.ini beside it, and sets `config_path` to that directory. It never reads or touches
 * kqarch.ini. An instance that is open is closed first. 0, or a negative code with
 * "FILE:LINE: what is wrong" on standard error (the instance is then closed). */
kqcode_t kq_instance_open(const schar* config_dir);

/* Forgets everything; another open may follow. */
void kq_instance_close(void);

enum kq_ini_line_kind {
    KQ_INI_SECTION, /* `key` is the section's name, `value` empty */
    KQ_INI_KEY,
    KQ_INI_BAD, /* neither; `value` says what is wrong with the line, `key` is empty */
};

typedef struct kq_ini_line_struct {
    ulint number; /* from 1 */
    enum kq_ini_line_kind kind;
    schar* key; /* trimmed; the buffers may be changed in place and end with the call */
    schar* value;
} kq_ini_line_t;

/* Called for every line that is not blank and no comment; a negative result ends the walk. */
typedef kqcode_t (*kq_ini_line_fn)(const kq_ini_line_t* line, void* context);

/* Walks an INI file in the way every configuration file is read. The negative result of `each`
 * that ended the walk, -140 for a path that cannot be read or is no regular file, -503 without
 * memory, else 0. A bad line is handed over like any other. Prints nothing. */
kqcode_t kq_ini_walk(const schar* path, kq_ini_line_fn each, void* context);

/* The same for a text of `size` characters in memory, with room for a terminator behind it; it is
 * changed in place. */
kqcode_t kq_ini_walk_text(schar* text, ulint64 size, kq_ini_line_fn each, void* context);

/* Hands what stands in kqarch.ini to arch_cfg_create and arch_cfg_add_value; may not throw. */
typedef kqcode_t (*kq_arch_reader_fn)(void* context);

/* From now on start-up has kqarch.ini read by `reader`, whose result it takes for that of reading;
 * with NULL by the layer again. Opening and closing an instance change nothing about it. */
void kq_ini_read_arch_by(kq_arch_reader_fn reader, void* context);

KQ_END_C

#endif
