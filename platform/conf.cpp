#include "conf.h"

#include <list>

#include "config_reader.h"
#include "instance_files.h"
#include "text.h"

using namespace platform;

namespace {

// A node of the server's list with what it points at; std::list keeps it where it is.
struct service {
    kq_svc_node_t entry{};
    kq_lst_node_t node{};
    std::string addresses;
};

std::list<service> services;

class service_reader : public config_reader {
  public:
    using config_reader::config_reader;
    std::list<service> read_services;

  private:
    kqcode_t on_key(const schar* key, const schar* value) override {
        kqcode_t code = check_name(key);
        if (code < 0) return code;
        service& added = read_services.emplace_back();
        added.addresses = value;
        copy_text(added.entry.name, key);
        added.entry.ips_str = added.addresses.data();
        added.node.data = &added.entry;
        return 0;
    }
};

void link_nodes(std::list<service>& all) {
    kq_lst_node_t* previous = nullptr;
    for (service& each : all) {
        each.node.prev = previous;
        if (previous != nullptr) previous->next = &each.node;
        previous = &each.node;
    }
}

}  // namespace

kqcode_t platform::read_services(const std::string& path) {
    service_reader reader(path);
    kqcode_t code = reader.read();
    if (code < 0) return code;
    link_nodes(reader.read_services);
    services.swap(reader.read_services);
    return 0;
}

void platform::forget_services() {
    services.clear();
}

kqcode_t conf_get_global_conf_value(ulint, kq_global_svc_conf_t* conf) {
    if (conf == nullptr) return ARCH_E_INVALID_VALUE;
    conf->svc_nodes = {};
    if (services.empty()) return 0;
    conf->svc_nodes.count = static_cast<ulint>(services.size());
    conf->svc_nodes.start = &services.front().node;
    conf->svc_nodes.end = &services.back().node;
    return 0;
}
