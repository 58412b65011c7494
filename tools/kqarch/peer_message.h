// kqarch peer-export and peer-verify: the message of a node, carried from one machine to another.
//
// peer-export writes the bytes that the server would send, or an envelope around them:
//
//   {"schema_version": 1, "instance": "KQ1", "arch_local_share": 1, "hpc_node": 2, "members": [],
//    "message": "1500000005002f61726368..."}
//
// A setting that is not configured is null; the members are those of the Raft group as `raft
// status --json` gives them; the message is in hexadecimal.
#ifndef KQARCH_PEER_MESSAGE_H
#define KQARCH_PEER_MESSAGE_H

#include <string>

#include "output.h"

exit_status run_peer_export(const std::string& directory, bool envelope, output& out);

// Checks a message from standard input, of either form, against the instance in `directory`.
exit_status run_peer_verify(const std::string& directory, output& out);

#endif
