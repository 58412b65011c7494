// The subscriber's connection text.
#include "arch_cfg.h"
#include "common/server.h"
#include "conf.h"
#include "utl.h"

using namespace arch;

namespace arch {
namespace {

constexpr ulint default_service_port = 5236;
constexpr ulint highest_port = 65535;

// The value of a text of decimal digits; false for anything else and for a value above 65535.
bool parse_port(std::string_view text, ulint& port) {
    port = 0;
    for (const schar digit : text) {
        if (digit < '0' || digit > '9') return false;
        port = 10 * port + static_cast<ulint>(digit - '0');
        if (port > highest_port) return false;
    }
    return true;
}

// A host that is longer than every address and host name is not of this machine.
bool is_local_host(std::string_view host) {
    pathname_t text;
    if (host.size() >= sizeof text) return false;
    copy_text(text, host);
    return ip_is_local_ip(text) != 0;
}

// `host:port`; a port of one digit is taken for a slip.
kqcode_t check_host_and_port(std::string_view server, std::size_t colon) {
    constexpr std::size_t fewest_digits = 2;
    const std::string_view port_text = server.substr(colon + 1);
    ulint port = 0;
    if (port_text.size() < fewest_digits || !parse_port(port_text, port))
        return ARCH_E_INVALID_PORT;
    if (port != ini_get_instance_port()) return 0;
    return is_local_host(server.substr(0, colon)) ? ARCH_E_DEST_IS_SELF : 0;
}

// One address of a service: a host, or `host:port` with blanks around both.
kqcode_t check_address(std::string_view address) {
    const std::size_t colon = address.find(':');
    ulint port = default_service_port;
    if (colon != std::string_view::npos && !parse_port(trimmed(address.substr(colon + 1)), port))
        return ARCH_E_INVALID_PORT;
    if (port != ini_get_value(0, ini_index_port_num)) return 0;
    return is_local_host(trimmed(address.substr(0, colon))) ? ARCH_E_DEST_IS_SELF : 0;
}

kqcode_t check_addresses(std::string_view addresses) {
    while (true) {
        const std::size_t comma = addresses.find(',');
        const kqcode_t code = check_address(addresses.substr(0, comma));
        if (code < 0 || comma == std::string_view::npos) return code;
        addresses.remove_prefix(comma + 1);
    }
}

}  // namespace
}  // namespace arch

kqcode_t arch_cfg_check_subscb_dest(const schar* input) {
    utl_euid_t euid;
    utl_init_uid_ext(&euid);
    if (input == nullptr || input[0] == '\0') return ARCH_E_INVALID_DEST;

    sysname_t user;
    sysname_t password;
    sysname_t server;
    sysname_t last_command = "";
    if (utl_resolve_userid_low(input, user, password, server, &euid, last_command) != 0)
        return ARCH_E_INVALID_VALUE;

    const std::string_view text = server;
    const std::size_t colon = text.rfind(':');
    if (colon != std::string_view::npos) return check_host_and_port(text, colon);
    if (same_text(server, "localhost")) return 0;
    return arch_cfg_check_subscb_svc(server);
}

kqcode_t arch_cfg_check_subscb_svc(const schar* server) {
    kq_global_svc_conf_t services{};
    if (const kqcode_t code = conf_get_global_conf_value(1, &services); code < 0) return code;

    bool found = false;
    for (const kq_lst_node_t* node = services.svc_nodes.start; node != nullptr; node = node->next) {
        const auto& service = *static_cast<const kq_svc_node_t*>(node->data);
        if (!same_text(service.name, server)) continue;
        const kqcode_t code = check_addresses(service.ips_str != nullptr ? service.ips_str : "");
        if (code < 0) return code;
        found = true;
    }
    return found ? 0 : ARCH_E_INVALID_DEST;
}
