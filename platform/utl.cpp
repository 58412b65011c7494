#include "utl.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

#include "main_settings.h"
#include "text.h"

using namespace platform;

namespace {

// Both families in one form: IPv4 as ::ffff:a.b.c.d.
in6_addr mapped(const in_addr& address) {
    in6_addr result{};
    result.s6_addr[10] = result.s6_addr[11] = 0xff;
    std::memcpy(result.s6_addr + 12, &address, sizeof(address));
    return result;
}

// A dotted address; or an IPv6 one, in brackets or with a `%scope` behind it or with both.
std::optional<in6_addr> parse_address(std::string_view text) {
    schar copy[INET6_ADDRSTRLEN];
    bool bracketed = text.size() > 2 && text.front() == '[' && text.back() == ']';
    if (bracketed) text = text.substr(1, text.size() - 2);
    std::string_view address = text.substr(0, text.find('%'));
    bool scoped = address.size() < text.size();
    if (address.size() >= sizeof(copy) || address.size() + 1 == text.size()) return std::nullopt;
    copy_text(copy, address);
    in6_addr six;
    if (inet_pton(AF_INET6, copy, &six) == 1) return six;
    in_addr four;
    if (bracketed || scoped || inet_pton(AF_INET, copy, &four) != 1) return std::nullopt;
    return mapped(four);
}

bool is_loopback(const in6_addr& address) {
    return IN6_IS_ADDR_LOOPBACK(&address) ||
           (IN6_IS_ADDR_V4MAPPED(&address) && address.s6_addr[12] == 127);
}

bool is_of(const ifaddrs& interface, const in6_addr& address) {
    if (interface.ifa_addr == nullptr) return false;
    in6_addr own{};
    if (interface.ifa_addr->sa_family == AF_INET) {
        sockaddr_in four;
        std::memcpy(&four, interface.ifa_addr, sizeof(four));
        own = mapped(four.sin_addr);
    } else if (interface.ifa_addr->sa_family == AF_INET6) {
        sockaddr_in6 six;
        std::memcpy(&six, interface.ifa_addr, sizeof(six));
        own = six.sin6_addr;
    } else {
        return false;
    }
    return IN6_ARE_ADDR_EQUAL(&own, &address) != 0;
}

bool is_of_this_machine(const in6_addr& address) {
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0) return false;
    bool found = false;
    for (const ifaddrs* interface = first; interface != nullptr; interface = interface->ifa_next) {
        found = found || is_of(*interface, address);
    }
    freeifaddrs(first);
    return found;
}

struct login_parts {
    std::string_view user;
    std::string_view password;
    std::string_view server;
    bool has_user = false;
    bool has_password = false;
};

login_parts split_login(std::string_view text) {
    login_parts parts;
    std::size_t at = text.rfind('@');
    parts.has_user = at != std::string_view::npos;
    parts.server = parts.has_user ? text.substr(at + 1) : text;
    if (!parts.has_user) return parts;
    parts.user = text.substr(0, at);
    std::size_t slash = parts.user.find('/');
    parts.has_password = slash != std::string_view::npos;
    if (!parts.has_password) return parts;
    parts.password = parts.user.substr(slash + 1);
    parts.user = parts.user.substr(0, slash);
    return parts;
}

bool is_well_formed(const login_parts& parts) {
    return !parts.server.empty() && (!parts.has_user || !parts.user.empty()) &&
           std::max({parts.user.size(), parts.password.size(), parts.server.size()}) <=
               KQ_SYSNAME_MAX;
}

void copy_part(schar* buffer, std::string_view part) {
    if (buffer != nullptr) buffer[part.copy(buffer, KQ_SYSNAME_MAX)] = '\0';
}

}  // namespace

schar* kq_strupr(schar* text) {
    for (schar* c = text; c != nullptr && *c != '\0'; ++c) {
        *c = upper_case(*c);
    }
    return text;
}

void cut_path_end_dir(schar* path) {
    std::size_t length = path != nullptr ? std::strlen(path) : 0;
    while (length > 1 && path[length - 1] == '/') {
        path[--length] = '\0';
    }
}

kqbool is_valid_pathname(const schar* path, ulint) {
    if (path == nullptr) return 0;
    std::string_view text = path;
    return !text.empty() && text.size() <= KQ_PATHNAME_MAX && !has_control(text);
}

kqbool ip_is_local_ip(const schar* ip) {
    if (ip == nullptr) return 0;
    if (equal_ignoring_case(ip, "localhost")) return 1;
    std::optional<in6_addr> address = parse_address(ip);
    return address && (is_loopback(*address) || is_of_this_machine(*address));
}

kqbool is_dpc_bp_or_mp_or_bs(void) {
    const std::string& mode = main_settings().dpc_mode;
    return equal_ignoring_case(mode, "BP") || equal_ignoring_case(mode, "MP") ||
           equal_ignoring_case(mode, "BS");
}

void utl_init_uid_ext(utl_euid_t* euid) {
    if (euid != nullptr) *euid = {};
}

lint utl_resolve_userid_low(const schar* text, schar* username, schar* pwd, schar* server,
                            utl_euid_t* euid, schar*) {
    login_parts parts;
    bool good = text != nullptr && !has_control(text);
    if (good) parts = split_login(text);
    good = good && is_well_formed(parts);
    if (!good) parts = {};
    copy_part(username, parts.user);
    copy_part(pwd, parts.password);
    copy_part(server, parts.server);
    if (euid != nullptr) *euid = {parts.has_user, parts.has_password};
    return good ? 0 : -1;
}
