#pragma once

#include "core/support/Time.h"
#include "sessions/SessionCalls.h"

#include <span>
#include <string>

namespace velmo {

/// Returns the sessions as a table for people, with a line for each session. Ages are rounded down
/// to their largest unit. The last column has the notice that no viewer has seen yet, or "bell".
std::string listText(std::span<const SessionEntry> sessions, WallTime now);

} // namespace velmo
