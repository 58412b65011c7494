// One node of a cluster or Raft group, as its files describe it. The process holds one instance at
// a time: what has to be compared with another node is kept here.
#ifndef KQARCH_CLUSTER_NODE_H
#define KQARCH_CLUSTER_NODE_H

#include <optional>
#include <string>
#include <vector>

#include "arch_cfg.h"
#include "config_file.h"
#include "instance.h"
#include "output.h"

// A directory that archives are written to: a LOCAL or REMOTE destination.
struct archive_place {
    std::string section;
    ulint type;
    std::string path;
    std::string real_path;  // without symbolic links; what does not exist is taken as written
    std::string owner;      // whose archives lie there: this instance's for LOCAL
    ulint line;             // of the path

    bool is_local() const { return type == ARCH_TYPE_LOCAL; }
    bool is_incoming_of(const std::string& instance) const;
};

// A member of the Raft group: another one, or this node as its global settings describe it.
struct raft_member {
    std::string name;
    ulint id;  // 65535: not configured
    std::string address;
    ulint port;
    bool learner;
    std::string section = {};  // empty for this node
};

// A destination that another instance receives.
struct standby {
    std::string section;
    ulint type;
    std::vector<std::string> names;
    std::string label;  // ready to be shown: without a password
    std::string timer;
};

struct cluster_node {
    std::string directory;
    std::string name;
    ulint port = 0;
    bool archiving = true;
    bool shares = false;  // ARCH_LOCAL_SHARE is exactly 1
    kqbool share = ARCH_UNSET_FLAG;
    ulint cluster_nodes = 0;  // HPC_NODE
    config_file file = {};
    std::vector<archive_place> places = {};
    std::vector<standby> standbys = {};
    std::optional<raft_member> self = {};  // absent without a Raft group
    std::vector<raft_member> members = {};
    std::vector<byte> message = {};
    kqcode_t endpoints = 0;  // whether each other endpoint of the cluster has a REMOTE destination
    std::string endpoint_text = {};
    std::string fault = {};  // why the server would not start

    // The LOCAL destination with that directory; null when there is none.
    const archive_place* local_at(const std::string& path) const;

    // The member of a name, this node included; null when it has none.
    const raft_member* find_member(const std::string& member) const;

    // "db/kqarch.ini:12", or without a line where there is none. Of a node without a directory only
    // a message is known.
    std::string place_of(ulint line) const;
};

// A message begins with the length of what follows.
constexpr ulint message_length_size = 4;

// Whether a message is as long as its first bytes say.
bool says_its_length(const std::vector<byte>& message);

// The message of the registry that is loaded, its body length included.
std::vector<byte> encode_message() KQ_EXCLUDES(arch_cfg_sys.mutex);

// What the registry that is loaded answers to a peer's message. A message that is shorter or longer
// than it says is malformed.
kqcode_t check_message(const std::vector<byte>& message) KQ_EXCLUDES(arch_cfg_sys.mutex);

// A node that could not be read or loaded.
struct unread_node {
    std::string directory;
    std::string name = {};  // empty: not even that is known
    std::string why = {};
};

struct node_reading {
    exit_status status;
    std::optional<cluster_node> node = {};  // absent unless `status` is exit_good
    unread_node unread = {};
};

// Loads the configuration of a directory as start-up does: nothing when archiving is off, an empty
// one when there is no kqarch.ini. Reports what keeps it from loading; what start-up would refuse
// of one that loads is a warning.
node_reading read_node(const std::string& directory, output& out);

// The node as the registry that is loaded describes it, of the instance that is open.
cluster_node node_of_registry() KQ_EXCLUDES(arch_cfg_sys.mutex);

// The node's registry again, for as long as this lives.
class loaded_node {
  public:
    explicit loaded_node(const cluster_node& node);
    loaded_node(const loaded_node&) = delete;
    loaded_node& operator=(const loaded_node&) = delete;

  private:
    instance open_;
};

#endif
