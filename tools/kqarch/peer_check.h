// kqarch peer-check: do the nodes of a cluster or Raft group agree?
#ifndef KQARCH_PEER_CHECK_H
#define KQARCH_PEER_CHECK_H

#include <string>
#include <vector>

#include "output.h"

exit_status run_peer_check(const std::vector<std::string>& directories, output& out);

#endif
