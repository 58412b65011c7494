#include "support/fields.h"

#include <cstring>
#include <sstream>
#include <stdexcept>
#include <type_traits>

namespace test_support {

namespace {

template <auto Member, class Record>
std::string get_member(const Record& record) {
    if constexpr (std::is_array_v<std::remove_reference_t<decltype(record.*Member)>>)
        return record.*Member;
    else
        return std::to_string(record.*Member);
}

template <auto Member, class Record>
void set_member(Record& record, const std::string& value) {
    using type = std::remove_reference_t<decltype(record.*Member)>;
    if constexpr (std::is_array_v<type>) {
        if (value.size() >= sizeof(type)) throw std::runtime_error("too long for the field");
        memcpy(record.*Member, value.c_str(), value.size() + 1);
    } else {
        record.*Member = static_cast<type>(std::stoull(value));
    }
}

template <auto Member>
field<arch_cfg_t> of_record(const char* name, const char* unset) {
    return {name, unset, get_member<Member, arch_cfg_t>, set_member<Member, arch_cfg_t>};
}

template <auto Member>
field<arch_cfg_sys_t> of_registry(const char* name, const char* unset) {
    return {name, unset, get_member<Member, arch_cfg_sys_t>, set_member<Member, arch_cfg_sys_t>};
}

// The sixteen names joined with "/", without the empty ones at the end.
std::string get_instances(const arch_cfg_t& arch) {
    std::string names;
    for (const auto& instance : arch.dest_insts)
        names += std::string(instance) + "/";
    names.erase(names.find_last_not_of('/') + 1);
    return names;
}

void set_instances(arch_cfg_t& arch, const std::string& names) {
    memset(arch.dest_insts, 0, sizeof arch.dest_insts);
    std::istringstream stream(names);
    std::string name;
    for (auto& instance : arch.dest_insts) {
        if (!std::getline(stream, name, '/')) break;
        if (name.size() >= sizeof instance) throw std::runtime_error("too long for the field");
        memcpy(instance, name.c_str(), name.size() + 1);
    }
}

// The fields that nothing here uses, as one: whether all their bytes are the same, and which.
std::string get_unused(const arch_cfg_t& arch) {
    std::string bytes(reinterpret_cast<const char*>(arch.dest_ip_arr), sizeof arch.dest_ip_arr);
    bytes.append(reinterpret_cast<const char*>(arch.dest_port_arr), sizeof arch.dest_port_arr);
    if (bytes.find_first_not_of(bytes[0]) != std::string::npos) return "mixed";
    return std::to_string(static_cast<unsigned char>(bytes[0]));
}

void set_unused(arch_cfg_t& arch, const std::string& value) {
    memset(arch.dest_ip_arr, std::stoi(value), sizeof arch.dest_ip_arr);
    memset(arch.dest_port_arr, std::stoi(value), sizeof arch.dest_port_arr);
}

}  // namespace

const std::vector<field<arch_cfg_t>>& record_fields() {
    static const std::vector<field<arch_cfg_t>> fields = {
        of_record<&arch_cfg_t::type>("type", "0"),
        {"dest_insts", "", get_instances, set_instances},
        of_record<&arch_cfg_t::n_inst>("n_inst", "1"),
        of_record<&arch_cfg_t::dest>("dest", ""),
        of_record<&arch_cfg_t::recv_path>("recv_path", ""),
        of_record<&arch_cfg_t::space_limit>("space_limit", "0"),
        of_record<&arch_cfg_t::file_size>("file_size", "1024"),
        of_record<&arch_cfg_t::hang_flag>("hang_flag", "1"),
        of_record<&arch_cfg_t::flush_buf_size>("flush_buf_size", "0"),
        of_record<&arch_cfg_t::timer_name>("timer_name", ""),
        of_record<&arch_cfg_t::status>("status", "1"),
        of_record<&arch_cfg_t::epno>("epno", "0"),
        of_record<&arch_cfg_t::arch_dest_ip>("arch_dest_ip", ""),
        of_record<&arch_cfg_t::arch_dest_port>("arch_dest_port", "0"),
        of_record<&arch_cfg_t::arch_send_delay>("arch_send_delay", "0"),
        of_record<&arch_cfg_t::arch_dest_id>("arch_dest_id", "65535"),
        of_record<&arch_cfg_t::arch_center_id>("arch_center_id", "0"),
        of_record<&arch_cfg_t::arch_recover_time>("arch_recover_time", "1"),
        of_record<&arch_cfg_t::wait_apply>("wait_apply", "255"),
        of_record<&arch_cfg_t::arch_failover>("arch_failover", "255"),
        of_record<&arch_cfg_t::arch_subscb_mode>("arch_subscb_mode", "0"),
        of_record<&arch_cfg_t::arch_threshold_per_second>("arch_threshold_per_second", "0"),
        {"unused", "0", get_unused, set_unused},
    };
    return fields;
}

const std::vector<field<arch_cfg_sys_t>>& registry_fields() {
    static const std::vector<field<arch_cfg_sys_t>> fields = {
        of_registry<&arch_cfg_sys_t::has_inited>("has_inited", "0"),
        of_registry<&arch_cfg_sys_t::ini_dir>("ini_dir", ""),
        of_registry<&arch_cfg_sys_t::wait_apply>("wait_apply", "255"),
        of_registry<&arch_cfg_sys_t::arch_cfg_changing>("arch_cfg_changing", "0"),
        of_registry<&arch_cfg_sys_t::xmal_ip>("xmal_ip", ""),
        of_registry<&arch_cfg_sys_t::xmal_port>("xmal_port", "0"),
        of_registry<&arch_cfg_sys_t::xmal_hb_interval>("xmal_hb_interval", "4294967295"),
        of_registry<&arch_cfg_sys_t::raft_hb_interval>("raft_hb_interval", "0"),
        of_registry<&arch_cfg_sys_t::raft_vote_interval>("raft_vote_interval", "4294967295"),
        of_registry<&arch_cfg_sys_t::raft_self_id>("raft_self_id", "65535"),
        of_registry<&arch_cfg_sys_t::self_center_id>("self_center_id", "0"),
        of_registry<&arch_cfg_sys_t::raft_pkg_interval>("raft_pkg_interval", "0"),
        of_registry<&arch_cfg_sys_t::raft_cnt>("raft_cnt", "0"),
        of_registry<&arch_cfg_sys_t::raft_learner>("raft_learner", "0"),
        of_registry<&arch_cfg_sys_t::arch_reserve_time>("arch_reserve_time", "4294967295"),
        of_registry<&arch_cfg_sys_t::arch_local_share>("arch_local_share", "255"),
        of_registry<&arch_cfg_sys_t::arch_local_share_check>("arch_local_share_check", "255"),
        of_registry<&arch_cfg_sys_t::arch_asm_mirror>("arch_asm_mirror", "255"),
        of_registry<&arch_cfg_sys_t::arch_asm_striping>("arch_asm_striping", "65535"),
    };
    return fields;
}

}  // namespace test_support
