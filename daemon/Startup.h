#pragma once

#include "daemon/DaemonHost.h"

#include <string>
#include <string_view>

namespace velmo {

inline constexpr double tickInterval = 5.0; ///< seconds

/// Returns a message as it stands in the log: "VelmoPowerDaemon: ", the message, a line feed. The
/// line has no level and no time, which launchd's own log adds.
std::string logLine(std::string_view message);

/// Runs the daemon, from its first step to its main loop.
void runDaemon(DaemonHost& host);

} // namespace velmo
