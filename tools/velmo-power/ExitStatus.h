#pragma once

/// How velmo-power ends. With a command it ends as that did, and has one status of its own for
/// whatever went wrong before, as `env`, `nice` and `timeout` have.
namespace velmo::ExitStatus {

inline constexpr int success = 0;       ///< the sleep setting is known to be as it was
inline constexpr int refused = 1;       ///< the daemon said no, or sleep may still be disabled
inline constexpr int usage = 2;         ///< the command line is wrong, or names no Mac
inline constexpr int unreachable = 3;   ///< no daemon answers
inline constexpr int withCommand = 125; ///< stands for each of these where there is a command
inline constexpr int notExecutable = 126;
inline constexpr int notFound = 127;
inline constexpr int bySignal = 128; ///< plus the number of the signal

} // namespace velmo::ExitStatus
