#pragma once

#include <sys/types.h>

#include <set>

namespace velmo {

/// Returns the process groups of the session with this leader, on this terminal.
std::set<pid_t> processGroupsOf(pid_t leader, int terminal);

} // namespace velmo
