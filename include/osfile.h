/* The OS layer: files and directories. A path may be longer than 256 characters (a directory plus
 * a file name); nothing here cuts it. A path that begins with `+` lies on ASM storage. */
#ifndef OSFILE_H
#define OSFILE_H

#include "kqtype.h"

KQ_BEGIN_C

typedef lint os_handle_t;

enum { OS_HANDLE_INVALID = -1 };

/* 1 unless it is certain that nothing is at `path`: what cannot be looked at counts as existing. */
kqbool os_file_is_exist(const schar* path);

/* Creates an empty file, mode 0600, exclusively and never through a symbolic link.
 * The handle, or OS_HANDLE_INVALID. */
os_handle_t os_file_create_normal(const schar* path);
void os_file_close_normal(os_handle_t handle);

/* Creates a file of `size` zero bytes like os_file_create_normal; nothing is left behind when that
 * fails. `access` and `purpose` are the server's open modes and make no difference here. */
os_handle_t os_file_create_with_init(const schar* path, ulint size, ulint access, ulint purpose);
void os_file_close(os_handle_t handle);

/* 1 when the file was deleted, else 0. */
kqbool os_file_delete(const schar* path);

/* Copies a file with its mode and, as far as this process may give them, its owner and group. Where
 * the group cannot be given, group and others get what the mode gives to both. With `replace` 1 an
 * existing target is replaced in one step. The copy is on disk on return; one that fails leaves the
 * old target whole and nothing half-made beside it. 1 when it was copied, else 0. */
kqbool os_file_copy(const schar* source, const schar* target, kqbool replace);

/* Non-zero when the file system of the nearest existing directory above `path` has fewer than
 * `bytes` free for this process. 0 for ASM storage. `mirror` makes no difference here. */
lint os_file_check_overflow(const schar* path, byte mirror, ulint64 bytes);

kqbool os_file_path_is_asm(const schar* path);
kqbool os_file_path_is_dfs(const schar* path);

kqbool os_dir_is_exist(const schar* path);

/* Creates a directory with its missing parents, mode 0750; 1 when it now exists. Refused for a
 * `dfs:` path and for an ASM path where no ASM root is configured. */
kqbool os_dir_create(const schar* path);

/* While on, os_dir_create and os_file_create_with_init change nothing and answer whether they
 * could have (the nearest existing directory above can be written and searched); a file "created"
 * so is closed and deleted without effect, and os_thread_sleep_low returns at once, because a
 * repeated attempt would get the same answer. */
void os_set_dry_run(kqbool on);

KQ_END_C

#endif
