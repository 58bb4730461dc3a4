#pragma once

#include "platform/posix/StandardStreams.h"

#include <string>
#include <string_view>

namespace velmo::PhoneExit {

inline constexpr int success = 0;
inline constexpr int usage = 122;     ///< the command line is wrong
inline constexpr int refused = 123;   ///< another bridge serves, the port is taken, no such device,
                                      ///< or the state folder can't be used or written to
inline constexpr int noBridge = 124;  ///< no bridge serves
inline constexpr int unwritten = 125; ///< what was asked for can't be written to standard output

} // namespace velmo::PhoneExit

namespace velmo {

/// Writes a line of velmo-phone to standard error and returns the exit status.
inline int phoneComplains(std::string_view message, int exitStatus) {
    writeStandardError("velmo-phone: " + std::string(message) + "\n");
    return exitStatus;
}

/// Writes to standard output and returns the exit status.
inline int phonePrints(std::string_view text) {
    return writeStandardOutput(text)
               ? PhoneExit::success
               : phoneComplains("standard output can't be written", PhoneExit::unwritten);
}

} // namespace velmo
