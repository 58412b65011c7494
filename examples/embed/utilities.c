/* utl.h: texts, paths, addresses, login texts. */
#include <ctype.h>
#include <ifaddrs.h>
#include <netdb.h>
#include <string.h>
#include <strings.h>

#include "utl.h"

schar* kq_strupr(schar* text) {
    for (schar* c = text; *c != '\0'; ++c)
        if (*c >= 'a' && *c <= 'z') *c = (schar)(*c - 'a' + 'A');
    return text;
}

void cut_path_end_dir(schar* path) {
    size_t length = strlen(path);
    while (length > 1 && path[length - 1] == '/')
        path[--length] = '\0';
}

static int has_control(const schar* text) {
    for (; *text != '\0'; ++text)
        if (iscntrl((unsigned char)*text)) return 1;
    return 0;
}

kqbool is_valid_pathname(const schar* path, ulint kind) {
    (void)kind;
    return path != NULL && *path != '\0' && strlen(path) <= KQ_PATHNAME_MAX && !has_control(path);
}

static int is_of_an_interface(const schar* ip) {
    struct ifaddrs* first;
    int found = 0;
    if (getifaddrs(&first) != 0) return 0;
    for (struct ifaddrs* one = first; one != NULL && !found; one = one->ifa_next) {
        char text[NI_MAXHOST];
        int family = one->ifa_addr != NULL ? one->ifa_addr->sa_family : AF_UNSPEC;
        if (family != AF_INET && family != AF_INET6) continue;
        socklen_t size =
            family == AF_INET ? sizeof(struct sockaddr_in) : sizeof(struct sockaddr_in6);
        if (getnameinfo(one->ifa_addr, size, text, sizeof text, NULL, 0, NI_NUMERICHOST) != 0)
            continue;
        text[strcspn(text, "%")] = '\0';
        found = strcasecmp(text, ip) == 0;
    }
    freeifaddrs(first);
    return found;
}

kqbool ip_is_local_ip(const schar* ip) {
    if (ip == NULL || *ip == '\0') return 0;
    return strcasecmp(ip, "localhost") == 0 || strncmp(ip, "127.", 4) == 0 ||
           strcmp(ip, "::1") == 0 || is_of_an_interface(ip);
}

void utl_init_uid_ext(utl_euid_t* euid) {
    memset(euid, 0, sizeof *euid);
}

static int copy_part(schar* part, const schar* begin, size_t length) {
    if (length > KQ_SYSNAME_MAX) return 0;
    memcpy(part, begin, length);
    part[length] = '\0';
    return 1;
}

/* [user[/password]@]server */
lint utl_resolve_userid_low(const schar* text, schar* username, schar* pwd, schar* server,
                            utl_euid_t* euid, schar* last_cmd) {
    (void)last_cmd;
    const schar* at = strrchr(text, '@');
    const schar* host = at != NULL ? at + 1 : text;
    size_t login = at != NULL ? (size_t)(at - text) : 0;
    const schar* slash = memchr(text, '/', login);
    size_t user = slash != NULL ? (size_t)(slash - text) : login;
    size_t password = slash != NULL ? login - user - 1 : 0;
    int good = *host != '\0' && (at == NULL || user > 0) && !has_control(text) &&
               copy_part(username, text, user) && copy_part(server, host, strlen(host)) &&
               copy_part(pwd, slash != NULL ? slash + 1 : text, password);
    if (!good) *username = *pwd = *server = '\0';
    euid->has_user = good && at != NULL;
    euid->has_password = good && slash != NULL;
    return good ? 0 : -1;
}
