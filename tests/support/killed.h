// A process that is killed between two of its system calls.
#ifndef TESTS_SUPPORT_KILLED_H
#define TESTS_SUPPORT_KILLED_H

#include <functional>
#include <set>

namespace test_support {

enum { killed = -1, may_not_trace = 77 };

// Makes a change in a process of its own and kills it at its n-th stop, never when that is negative:
// before and after each system call, or each of `calls`. The exit status, or one of the above.
int kill_at_stop(int nth, const std::function<int()>& change, const std::set<long>& calls = {});

}  // namespace test_support

#endif
