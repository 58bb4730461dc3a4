#pragma once

#include <sys/types.h>

#include <cstddef>
#include <set>
#include <vector>

namespace velmo {

/// Returns the process groups of this user's processes in the session with this leader, also after
/// the leader's end. Empty if nothing is left of the session, or if the system lists no processes.
std::set<pid_t> processGroupsOf(pid_t leader);

/// What `ancestryOf` looks at is bounded, since processes may change their places meanwhile.
inline constexpr std::size_t maxAncestry = 2048;

/// Returns the process, its ancestors up to the first one, and the leaders of their sessions, as
/// far as the system shows these processes.
std::vector<pid_t> ancestryOf(pid_t process);

} // namespace velmo
