// What peer-verify reads: a message, or an envelope with a message in it.
#ifndef KQARCH_PEER_PARCEL_H
#define KQARCH_PEER_PARCEL_H

#include <string>

#include "cluster_node.h"

constexpr size_t longest_parcel = size_t{1} << 20;  // a message of all destinations has some 6 KB

struct parcel {
    cluster_node sender = {};  // so far as it is told: without an envelope its message alone
    bool is_envelope = false;
    bool tells_members = false;  // of the Raft group
    bool nothing_sent = false;   // the sender has failed
    std::string problem = {};    // why there is no message
};

parcel unpack(const std::string& bytes);

#endif
