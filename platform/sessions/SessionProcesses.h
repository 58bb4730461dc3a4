#pragma once

#include <sys/types.h>

#include <set>

namespace velmo {

/// Returns the process groups of this user's processes in the session with this leader, also after
/// the leader's end. Empty if nothing is left of the session, or if the system lists no processes.
std::set<pid_t> processGroupsOf(pid_t leader);

} // namespace velmo
