#include "dcr_dll.h"

#include <algorithm>
#include <vector>

#include "config_reader.h"
#include "instance_files.h"
#include "platform_code.h"
#include "text.h"

using namespace platform;

namespace {

constexpr ulint database_group_type = 4;
constexpr usint only_group = 0;
constexpr ulint not_given = ~0u;

struct endpoint {
    std::string name;
    ulint line = 0;
    ulint dcr_seqno = not_given;
    ulint ep_seqno = not_given;
    std::string state = "OK";
    std::string host;
    ulint port = 0;

    bool is_ok() const { return equal_ignoring_case(state, "OK"); }
};

constexpr config_row<endpoint> endpoint_rows[] = {
    {"DCR_SEQNO", 0, 255, &endpoint::dcr_seqno, nullptr},
    {"EP_SEQNO", 0, 15, &endpoint::ep_seqno, nullptr},
    {"STATE", 2, 3, nullptr, &endpoint::state},
    {"EP_HOST", 0, 64, nullptr, &endpoint::host},
    {"EP_LSNR_PORT", 0, 65535, &endpoint::port, nullptr},
};

std::vector<endpoint> endpoints;

template <class value>
const endpoint* find_endpoint(value endpoint::*field, const value& wanted) {
    auto found = std::find_if(endpoints.begin(), endpoints.end(),
                              [&](const endpoint& each) { return each.*field == wanted; });
    return found != endpoints.end() ? &*found : nullptr;
}

class cluster_reader : public config_reader {
  public:
    using config_reader::config_reader;
    std::vector<endpoint> read_endpoints;

  private:
    kqcode_t on_section(const schar* name) override {
        kqcode_t code = check_name(name);
        if (code < 0) return code;
        for (const endpoint& other : read_endpoints) {
            if (equal_ignoring_case(other.name, name)) {
                return refuse(ARCH_E_DUPLICATE_NAME, "an endpoint of that name is given twice");
            }
        }
        code = finish_section();
        if (code < 0) return code;
        if (read_endpoints.size() == DCR_EP_MAX) {
            return refuse(ARCH_E_INVALID_VALUE, "more than %d endpoints", +DCR_EP_MAX);
        }
        endpoint& added = read_endpoints.emplace_back();
        added.name = name;
        added.line = line();
        return 0;
    }

    kqcode_t on_key(const schar* key, const schar* value) override {
        if (read_endpoints.empty()) {
            return refuse(ARCH_E_NO_SECTION, "a key before the first section");
        }
        endpoint read;
        kqcode_t code = store(endpoint_rows, read, key, value);
        if (code < 0) return code;
        if (is_taken(&endpoint::dcr_seqno, read)) return refuse_number("DCR_SEQNO");
        if (is_taken(&endpoint::ep_seqno, read)) return refuse_number("EP_SEQNO");
        if (!read.is_ok() && !equal_ignoring_case(read.state, "ERR")) {
            return refuse(ARCH_E_INVALID_VALUE, "STATE must be OK or ERR");
        }
        return store(endpoint_rows, read_endpoints.back(), key, value);
    }

    kqcode_t on_end() override { return finish_section(); }

    // Also by the same section: a number is given once.
    bool is_taken(ulint endpoint::*number, const endpoint& read) const {
        if (read.*number == not_given) return false;
        return read_endpoints.back().*number != not_given ||
               std::any_of(read_endpoints.begin(), read_endpoints.end(),
                           [&](const endpoint& other) { return other.*number == read.*number; });
    }

    kqcode_t refuse_number(const schar* key) const {
        return refuse(ARCH_E_INVALID_VALUE, "%s is given twice", key);
    }

    kqcode_t finish_section() const {
        if (read_endpoints.empty()) return 0;
        const endpoint& last = read_endpoints.back();
        if (last.dcr_seqno != not_given && last.ep_seqno != not_given) return 0;
        return refuse_at(last.line, ARCH_E_INVALID_VALUE, "%s is missing",
                         last.dcr_seqno == not_given ? "DCR_SEQNO" : "EP_SEQNO");
    }
};

// A number of no endpoint marks the places of the map that no endpoint has.
byte unused_dcr_seqno() {
    ulint unused = 0;
    while (find_endpoint(&endpoint::dcr_seqno, unused) != nullptr) {
        ++unused;
    }
    return static_cast<byte>(unused);
}

kqcode_t list_endpoints(usint group, bool ok, byte* count, byte* numbers, byte* map) {
    if (group != only_group || endpoints.empty()) return PLATFORM_E_NO_ENDPOINT;
    *count = 0;
    std::fill_n(map, +DCR_EP_MAX, unused_dcr_seqno());
    for (const endpoint& each : endpoints) {
        map[each.ep_seqno] = static_cast<byte>(each.dcr_seqno);
        if (each.is_ok() == ok) numbers[(*count)++] = static_cast<byte>(each.dcr_seqno);
    }
    return 0;
}

}  // namespace

kqcode_t platform::read_cluster_registry(const std::string& path) {
    cluster_reader reader(path);
    kqcode_t code = reader.read();
    if (code >= 0) endpoints.swap(reader.read_endpoints);
    return code;
}

void platform::forget_cluster_registry() {
    endpoints.clear();
}

kqcode_t dcr3_dll_get_group_seq_by_type(ulint group_type, const schar* ep_name, ulint,
                                        usint* self_epno, usint* dgroup_seq) {
    if (group_type != database_group_type || ep_name == nullptr) return PLATFORM_E_NO_ENDPOINT;
    for (const endpoint& each : endpoints) {
        if (!equal_ignoring_case(each.name, ep_name)) continue;
        *self_epno = static_cast<usint>(each.ep_seqno);
        *dgroup_seq = only_group;
        return 0;
    }
    return PLATFORM_E_NO_ENDPOINT;
}

kqcode_t dcr3_dll_group_get_ok_ep_arr(usint dgroup_seq, byte* n_ok_ep, byte* ok_ep_arr,
                                      byte* ep_seqno_arr) {
    return list_endpoints(dgroup_seq, true, n_ok_ep, ok_ep_arr, ep_seqno_arr);
}

kqcode_t dcr3_dll_group_get_err_ep_arr(usint dgroup_seq, byte* n_err_ep, byte* err_ep_arr,
                                       byte* ep_seqno_arr) {
    return list_endpoints(dgroup_seq, false, n_err_ep, err_ep_arr, ep_seqno_arr);
}

usint dcr3_dll_get_ep_seqno_by_dcr_seqno(byte dcr_seqno, const byte* ep_seqno_arr) {
    const byte* end = ep_seqno_arr + DCR_EP_MAX;
    const byte* found = std::find(ep_seqno_arr, end, dcr_seqno);
    return found != end ? static_cast<usint>(found - ep_seqno_arr) : usint{255};
}

kqcode_t dcr3_dll_get_ep_info_by_type(ulint group_type, byte dcr_seqno, dcr_ep_t* ep) {
    if (group_type != database_group_type) return PLATFORM_E_NO_ENDPOINT;
    const endpoint* found = find_endpoint(&endpoint::dcr_seqno, ulint{dcr_seqno});
    if (found == nullptr) return PLATFORM_E_NO_ENDPOINT;
    copy_text(ep->ep_name, found->name);
    copy_text(ep->ep_host, found->host);
    ep->dcr_seqno = dcr_seqno;
    ep->ep_seqno = static_cast<byte>(found->ep_seqno);
    ep->ep_lsnr_port = static_cast<usint>(found->port);
    return 0;
}
