#pragma once

#include "daemon/DaemonHost.h"

#include <string>
#include <string_view>

namespace velmo {

inline constexpr double tickInterval = 5.0; ///< seconds

/// A message as the log holds it: "VelmoPowerDaemon: ", the message, a line feed. No level and no
/// time: launchd's own log adds that.
std::string logLine(std::string_view message);

/// The life of the daemon, from its first step to its main loop.
void runDaemon(DaemonHost& host);

} // namespace velmo
