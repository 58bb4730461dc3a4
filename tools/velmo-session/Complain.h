#pragma once

#include "platform/posix/StandardStreams.h"

#include <string>
#include <string_view>

namespace velmo {

/// Writes a line to standard error and returns the exit status.
inline int complain(std::string_view message, int exitStatus) {
    writeStandardError("velmo-session: " + std::string(message) + "\n");
    return exitStatus;
}

} // namespace velmo
