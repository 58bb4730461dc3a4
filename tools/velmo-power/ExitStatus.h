#pragma once

/// How velmo-power ends. With a command it ends as the command did. A status of velmo-power's own
/// then stands for all that went wrong before the command ran, as with `env`, `nice` and `timeout`.
namespace velmo::ExitStatus {

inline constexpr int success = 0;       ///< the sleep setting is known to be as it was
inline constexpr int refused = 1;       ///< refused, sleep may still be disabled, or output failed
inline constexpr int usage = 2;         ///< the command line is wrong, or names no Mac
inline constexpr int unreachable = 3;   ///< no daemon answers
inline constexpr int withCommand = 125; ///< in place of 1, 2 and 3 if there is a command
inline constexpr int notExecutable = 126;
inline constexpr int notFound = 127;
inline constexpr int bySignal = 128; ///< plus the number of the signal

} // namespace velmo::ExitStatus
