/* Server utilities: texts, paths, addresses, login texts. */
#ifndef UTL_H
#define UTL_H

#include "kqtype.h"

KQ_BEGIN_C

/* Turns a text to upper case in place (ASCII letters) and returns it. */
schar* kq_strupr(schar* text);

/* Removes every `/` at the end of a path, but leaves `/` itself. */
void cut_path_end_dir(schar* path);

/* 1 for a path of 1 to 256 bytes, none of them a control character. `kind` is 0 for a directory,
 * 1 for a file, and makes no difference. */
kqbool is_valid_pathname(const schar* path, ulint kind);

/* Non-zero for `localhost` in any case, a loopback address, or an address of one of this machine's
 * interfaces, IPv4 or IPv6. The empty text is not local. */
kqbool ip_is_local_ip(const schar* ip);

/* 1 when the instance runs in a DPC mode of kind BP, MP or BS. */
kqbool is_dpc_bp_or_mp_or_bs(void);

/* What a login text says about how to log in, beyond user, password and server. */
typedef struct utl_euid_struct {
    kqbool has_user;
    kqbool has_password;
} utl_euid_t;

void utl_init_uid_ext(utl_euid_t* euid);

/* Splits `[user[/password]@]server`. The server is what follows the last `@`; a text without `@`
 * is a server alone. `username`, `pwd` and `server` are sysname_t buffers, empty where the text
 * has no such part. `last_cmd` is for the interactive client and may be null. 0, or non-zero for
 * an empty user or server, a part of more than 128 bytes or a control character; the buffers are
 * then empty. */
lint utl_resolve_userid_low(const schar* text, schar* username, schar* pwd, schar* server,
                            utl_euid_t* euid, schar* last_cmd);

KQ_END_C

#endif
