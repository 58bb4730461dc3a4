#pragma once

#include <sys/types.h>

#include <cstddef>
#include <set>
#include <vector>

namespace velmo {

/// What `ancestryOf` looks at is bounded, since processes may change their places meanwhile.
inline constexpr std::size_t maxAncestry = 2048;

/// Returns the process groups of the session with this leader, on this terminal.
std::set<pid_t> processGroupsOf(pid_t leader, int terminal);

/// Returns the process, its ancestors up to the first one, and the leaders of their sessions, as
/// far as the system shows these processes.
std::vector<pid_t> ancestryOf(pid_t process);

} // namespace velmo
