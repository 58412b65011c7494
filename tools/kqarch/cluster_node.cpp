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
    if (has_directory(arch.type))
        node.places.push_back(place_of(arch, node));
    else if (is_member(arch))
        node.members.push_back(member_of(arch));
    else if (arch.type != ARCH_TYPE_NONE)
        node.standbys.push_back(standby_of(arch));
}

void describe_registry(cluster_node& node) KQ_EXCLUDES(arch_cfg_sys.mutex) {
    arch_cfg_hold hold;
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
    arch_cfg_hold hold;
    std::string text(512, '\0');
    ulint length = 0;
    node.endpoints = arch_cfg_remote_all_other_ep_check(0, &length, text.data());
    node.endpoint_text = text.substr(0, text.find('\0'));
}

class node_reader {
  public:
    node_reader(const std::string& directory, output& out) : open_(directory), out_(out) {
        node_.directory = open_.directory();
    }

    node_reading run() {
        if (open_.failure()) {
            note(open_.failure()->found);
            return unread(open_.failure()->status);
        }
        node_.name = ini_get_instance_name();
        node_.port = ini_get_instance_port();
        node_.archiving = open_.archiving();
        node_.cluster_nodes = ini_get_value(0, ini_index_hpc_node);
        exit_status status = load_as_start_up_does();
        if (status != exit_good) return unread(status);
        describe_registry(node_);
        node_.message = encode_message();
        if (node_.archiving) check_endpoints(node_);
        return {.status = exit_good, .node = std::move(node_)};
    }

  private:
    exit_status load_as_start_up_does() {
        if (!node_.archiving) {
            out_.report({.level = severity::note,
                         .file = open_.file("kq.ini"),
                         .text = "archiving is off: the server does not look at kqarch.ini",
                         .hint = "Set ARCH_FLAG = 1 to take part."});
            return exit_good;
        }
        os_set_dry_run(1);
        exit_status status = load_config();
        os_set_dry_run(0);
        return status;
    }

    exit_status load_config() {
        if (open_.config_missing()) {
            out_.report({.level = severity::note,
                         .file = open_.config_file(),
                         .text = "does not exist: the node has no destinations"});
            return exit_good;
        }
        if (kqcode_t code = node_.file.read(open_.config_file()); code < 0) {
            note(unreadable(open_.config_file(), code).found);
            return exit_failed;
        }
        refused_lines refused = load(node_.file);
        for (const diagnostic& one : refused.first)
            note(one);
        out_.leave_out(node_.file.path(), refused.more);
        if (!why_.empty()) return exit_refused;
        warn_unless_it_starts();
        return exit_good;
    }

    void warn_unless_it_starts() {
        validation result = validate(node_.file, {});
        if (result.code == 0) return;
        diagnostic warning = result.failures.back();
        warning.level = severity::warning;
        warning.text = node_.fault = "the server would not start with this: " + warning.text;
        warning.hint = "`kqarch check " + open_.directory() + "` lists every problem.";
        out_.report(warning);
    }

    // What is reported first is why the node could not be loaded.
    void note(const diagnostic& found) {
        if (why_.empty())
            why_ = found.line == 0 ? found.text
                                   : "line " + std::to_string(found.line) + ": " + found.text;
        out_.report(found);
    }

    node_reading unread(exit_status status) const {
        return {.status = status, .unread = {node_.directory, node_.name, why_}};
    }

    instance open_;
    output& out_;
    cluster_node node_;
    std::string why_;
};

}  // namespace

bool archive_place::is_incoming_of(const std::string& instance) const {
    return !is_local() && same_text(owner, instance);
}

const archive_place* cluster_node::local_at(const std::string& path) const {
    for (const archive_place& place : places)
        if (place.is_local() && place.path == path) return &place;
    return nullptr;
}

const raft_member* cluster_node::find_member(const std::string& member) const {
    if (self && same_text(self->name, member)) return &*self;
    for (const raft_member& one : members)
        if (same_text(one.name, member)) return &one;
    return nullptr;
}

std::string cluster_node::place_of(ulint line) const {
    if (directory.empty()) return "message of " + name;
    std::string path = file.path().empty() ? directory + "/kqarch.ini" : file.path();
    return line == 0 ? path : path + ":" + std::to_string(line);
}

std::vector<byte> encode_message() {
    arch_cfg_hold hold;
    kqbool names = arch_cfg_sys.arch_local_share == 1 ? 1 : 0;
    std::vector<byte> message(arch_cfg_info_len_calc(names));
    arch_cfg_info_encode(message.data(), 0, static_cast<ulint>(message.size()), names);
    return message;
}

bool says_its_length(const std::vector<byte>& message) {
    if (message.size() < message_length_size) return false;
    ulint body = 0;
    for (size_t i = message_length_size; i-- > 0;)
        body = body << 8 | message[i];
    return body == message.size() - message_length_size;
}

kqcode_t check_message(const std::vector<byte>& message) {
    if (!says_its_length(message)) return ARCH_E_PEER_CFG_MISMATCH;
    kqenv_t pool = mem_env_create(0);
    if (pool == nullptr) return ARCH_E_OUT_OF_MEMORY;
    kqcode_t code = 0;
    {
        arch_cfg_hold hold;
        code =
            arch_cfg_info_decode_and_check(pool, message.data() + message_length_size,
                                           static_cast<ulint>(message.size()) - message_length_size,
                                           arch_cfg_sys.arch_local_share);
    }
    mem_env_destroy(pool);
    return code;
}

node_reading read_node(const std::string& directory, output& out) {
    return node_reader(directory, out).run();
}

cluster_node node_of_registry() {
    cluster_node node;
    node.name = ini_get_instance_name();
    describe_registry(node);
    return node;
}

loaded_node::loaded_node(const cluster_node& node) : open_(node.directory) {
    if (open_.failure()) throw std::runtime_error(node.directory + " changed while it was read");
    if (node.archiving) load(node.file);
}
