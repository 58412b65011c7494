// Users' names, without the name service: a program that is linked statically must not load it.
#ifndef KQARCH_USER_NAME_H
#define KQARCH_USER_NAME_H

#include <sys/types.h>

#include <optional>
#include <string>

// From /etc/passwd, or where else `getent` finds users.
std::optional<std::string> user_name(uid_t user);

#endif
