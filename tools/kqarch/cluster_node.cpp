#include "cluster_node.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "capture.h"
#include "ini.h"
#include "loading.h"
#include "mem.h"
#include "osfile.h"
#include "settings.h"
#include "text.h"
#include "validation.h"

namespace {

namespace fs = std::filesystem;

constexpr size_t length_size = 4;

bool is_member(const arch_cfg_t& arch) {
    return arch.type == ARCH_TYPE_RAFT || arch.type == ARCH_TYPE_LEARNER;
}

std::string real_path(const std::string& path) {
    if (!path.starts_with('/')) return path;  // ASM or DFS storage
    std::error_code failed;
    fs::path real = fs::weakly_canonical(path, failed);
    return failed ? path : real.string();
}

archive_place place_of(const arch_cfg_t& arch, const cluster_node& node) {
    bool local = arch.type == ARCH_TYPE_LOCAL;
    return {arch.name,
            arch.type,
            arch.dest,
            real_path(arch.dest),
            local ? node.name : arch.timer_name,
            node.file.key_line(arch.name, local ? "ARCH_DEST" : "ARCH_INCOMING_PATH")};
}

standby standby_of(const arch_cfg_t& arch) {
    standby found{arch.name, arch.type, {}, destination_of(arch), ""};
    for (size_t i = 0; i < std::min<size_t>(arch.n_inst, ARCH_INST_MAX); ++i)
        found.names.emplace_back(arch.dest_insts[i]);
    bool timed = arch.type == ARCH_TYPE_ASYNC || arch.type == ARCH_TYPE_SUBSCRIBE;
    if (timed) found.timer = hide_password(visible(arch.timer_name), text_place::other);
    return found;
}

raft_member member_of(const arch_cfg_t& arch) {
    return {arch.dest,
            arch.arch_dest_id,
            arch.arch_dest_ip,
            arch.arch_dest_port,
            arch.type == ARCH_TYPE_LEARNER,
            arch.name};
}

void describe_destination(const arch_cfg_t& arch, cluster_node& node) {
    if (arch.type == ARCH_TYPE_LOCAL || arch.type == ARCH_TYPE_REMOTE)
        node.places.push_back(place_of(arch, node));
    else if (is_member(arch))
        node.members.push_back(member_of(arch));
    else if (arch.type != ARCH_TYPE_NONE)
        node.standbys.push_back(standby_of(arch));
}

void describe_registry(cluster_node& node) KQ_EXCLUDES(arch_cfg_sys.mutex) {
    registry_hold hold;
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        describe_destination(*arch, node);
    node.share = arch_cfg_sys.arch_local_share;
    node.shares = node.share == 1;
    bool in_group = !node.members.empty() || arch_cfg_sys.raft_self_id != ARCH_UNSET_SHORT;
    if (in_group)
        node.self = raft_member{node.name, arch_cfg_sys.raft_self_id, arch_cfg_sys.xmal_ip,
                                arch_cfg_sys.xmal_port, arch_cfg_check_self_is_learner() == 1};
}

void check_endpoints(cluster_node& node) KQ_EXCLUDES(arch_cfg_sys.mutex) {
    registry_hold hold;
    std::string text(512, '\0');
    ulint length = 0;
    node.endpoints = arch_cfg_remote_all_other_ep_check(0, &length, text.data());
    node.endpoint_text = text.substr(0, text.find('\0'));
}

void warn_unless_it_starts(const instance& open, const config_file& file, output& out) {
    validation result = validate(file, {});
    if (result.code == 0) return;
    diagnostic warning = result.failures.back();
    warning.level = severity::warning;
    warning.text = "the server would not start with this: " + warning.text;
    warning.hint = "`kqarch check " + open.directory() + "` lists every problem.";
    out.report(warning);
}

exit_status load_config(const instance& open, config_file& file, output& out) {
    if (open.config_missing()) {
        out.report({.level = severity::note,
                    .file = open.config_file(),
                    .text = "does not exist: the node has no destinations"});
        return exit_good;
    }
    if (kqcode_t code = file.read(open.config_file()); code < 0) {
        out.report(unreadable(open.config_file(), code).found);
        return exit_failed;
    }
    std::vector<diagnostic> refused = load(file);
    for (const diagnostic& one : refused)
        out.report(one);
    if (!refused.empty()) return exit_refused;
    warn_unless_it_starts(open, file, out);
    return exit_good;
}

}  // namespace

const raft_member* cluster_node::find_member(const std::string& member) const {
    if (self && same_text(self->name, member)) return &*self;
    for (const raft_member& one : members)
        if (same_text(one.name, member)) return &one;
    return nullptr;
}

std::string cluster_node::place_of(ulint line) const {
    std::string path = file.path().empty() ? directory + "/kqarch.ini" : file.path();
    return line == 0 ? path : path + ":" + std::to_string(line);
}

std::vector<byte> encode_message() {
    registry_hold hold;
    kqbool names = arch_cfg_sys.arch_local_share == 1 ? 1 : 0;
    std::vector<byte> message(arch_cfg_info_len_calc(names));
    arch_cfg_info_encode(message.data(), 0, static_cast<ulint>(message.size()), names);
    return message;
}

kqcode_t check_message(const std::vector<byte>& message) {
    if (message.size() < length_size) return ARCH_E_PEER_CFG_MISMATCH;
    ulint body = 0;
    for (size_t i = length_size; i-- > 0;)
        body = body << 8 | message[i];
    if (body != message.size() - length_size) return ARCH_E_PEER_CFG_MISMATCH;
    kqenv_t pool = mem_env_create(0);
    if (pool == nullptr) return ARCH_E_OUT_OF_MEMORY;
    kqcode_t code = 0;
    {
        registry_hold hold;
        code = arch_cfg_info_decode_and_check(pool, message.data() + length_size, body,
                                              arch_cfg_sys.arch_local_share);
    }
    mem_env_destroy(pool);
    return code;
}

exit_status load_instance(const instance& open, config_file& file, output& out) {
    if (open.archiving()) {
        os_set_dry_run(1);
        exit_status status = load_config(open, file, out);
        os_set_dry_run(0);
        return status;
    }
    out.report({.level = severity::note,
                .file = open.file("kq.ini"),
                .text = "archiving is off: the server does not look at kqarch.ini",
                .hint = "Set ARCH_FLAG = 1 to take part."});
    return exit_good;
}

std::optional<cluster_node> read_node(const std::string& directory, exit_status& status,
                                      output& out) {
    instance open(directory);
    cluster_node node;
    if (open.failure()) {
        out.report(open.failure()->found);
        status = open.failure()->status;
        return std::nullopt;
    }
    node.directory = open.directory();
    node.name = ini_get_instance_name();
    node.port = ini_get_instance_port();
    node.archiving = open.archiving();
    node.cluster_nodes = ini_get_value(0, ini_index_hpc_node);
    status = load_instance(open, node.file, out);
    if (status != exit_good) return std::nullopt;
    describe_registry(node);
    node.message = encode_message();
    if (node.archiving) check_endpoints(node);
    return node;
}

loaded_node::loaded_node(const cluster_node& node) : open_(node.directory) {
    if (open_.failure()) throw std::runtime_error(node.directory + " changed while it was read");
    if (node.archiving) load(node.file);
}
