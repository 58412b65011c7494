// A subscriber's connection text in the first line, and in each further line a service, NAME=
// addresses. The answer must be the model's, and no text may be read beyond its end.
#include <arch_cfg.h>
#include <conf.h>
#include <ctype.h>
#include <stdlib.h>
#include <strings.h>
#include <utl.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "watched_block.h"

namespace {

using text = std::string_view;

std::vector<text> split(text whole, char separator) {
    std::vector<text> pieces;
    for (size_t at = 0; at <= whole.size(); at += pieces.back().size() + 1)
        pieces.push_back(whole.substr(at, whole.find(separator, at) - at));
    return pieces;
}

struct service {
    text name, addresses;
    kq_svc_node_t entry{};
    watched_block<schar> block;
    kq_lst_node_t node{};
};

std::vector<service> services;

void set_services(const std::vector<text>& lines) {
    services.clear();
    services.resize(lines.size() - 1);
    for (size_t i = 1; i < lines.size(); i++) {
        service& each = services[i - 1];
        size_t equals = std::min(lines[i].find('='), lines[i].size());
        each.name = lines[i].substr(0, std::min<size_t>(equals, KQ_SYSNAME_MAX));
        each.addresses = lines[i].substr(std::min(equals + 1, lines[i].size()));
        each.entry.name[each.name.copy(each.entry.name, KQ_SYSNAME_MAX)] = '\0';
        each.block = make_text(each.addresses);
        each.entry.ips_str = each.block.get();
        each.node.data = &each.entry;
        each.node.next = i + 1 < lines.size() ? &services[i].node : nullptr;
    }
}

// ---- What the answer ought to be ----

bool same(text left, text right) {
    return left.size() == right.size() && strncasecmp(left.data(), right.data(), left.size()) == 0;
}

text without_blanks(text part) {
    size_t first = std::min(part.find_first_not_of(" "), part.size());
    return part.substr(first, part.find_last_not_of(" ") + 1 - first);
}

bool is_control(char c) {
    return iscntrl(static_cast<unsigned char>(c)) != 0;
}

constexpr long own_port = 5236, no_port = -1;

long port_of(text digits) {
    size_t leading = std::min(digits.find_first_not_of('0'), digits.size());
    if (digits.find_first_not_of("0123456789") != text::npos) return no_port;
    if (digits.size() - leading > 5) return no_port;
    long port = atol(std::string(digits).c_str());
    return port > 65535 ? no_port : port;
}

kqcode_t verdict_of_address(text host, long port) {
    if (port == no_port) return ARCH_E_INVALID_PORT;
    bool own = port == own_port && host.size() <= 256 && ip_is_local_ip(std::string(host).c_str());
    return own ? ARCH_E_DEST_IS_SELF : 0;
}

kqcode_t verdict_of_service(text name) {
    kqcode_t code = ARCH_E_INVALID_DEST;
    for (const service& each : services) {
        if (!same(each.name, name)) continue;
        code = 0;
        for (text address : split(each.addresses, ',')) {
            size_t colon = std::min(address.find(':'), address.size());
            bool has_port = colon < address.size();
            long port = has_port ? port_of(without_blanks(address.substr(colon + 1))) : own_port;
            code = verdict_of_address(without_blanks(address.substr(0, colon)), port);
            if (code < 0) return code;
        }
    }
    return code;
}

kqcode_t verdict(text login) {
    if (login.empty()) return ARCH_E_INVALID_DEST;
    size_t at = login.rfind('@');
    text server = login.substr(at + 1);
    bool malformed = server.empty() || server.size() > 128 || at == 0 ||
                     std::any_of(login.begin(), login.end(), is_control);
    if (at != text::npos) {
        text account = login.substr(0, at), user = account.substr(0, account.find('/'));
        size_t password = account.size() - std::min(user.size() + 1, account.size());
        malformed = malformed || user.empty() || user.size() > 128 || password > 128;
    }
    if (malformed) return ARCH_E_INVALID_VALUE;
    size_t colon = server.rfind(':');
    if (colon == text::npos) return same(server, "localhost") ? 0 : verdict_of_service(server);
    text digits = server.substr(colon + 1);
    return verdict_of_address(server.substr(0, colon),
                              digits.size() < 2 ? no_port : port_of(digits));
}

}  // namespace

// The services of this input take the place of those of kqsvc.ini.
kqcode_t conf_get_global_conf_value(ulint, kq_global_svc_conf_t* conf) {
    conf->svc_nodes = {};
    conf->svc_nodes.count = static_cast<ulint>(services.size());
    if (!services.empty()) conf->svc_nodes.start = &services.front().node;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    text input(reinterpret_cast<const char*>(data), size);
    if (input.find('\0') != text::npos) return 0;
    std::vector<text> lines = split(input, '\n');
    set_services(lines);
    auto login = make_text(lines[0]);
    if (arch_cfg_check_subscb_dest(login.get()) != verdict(lines[0])) abort();
    services.clear();
    return 0;
}
