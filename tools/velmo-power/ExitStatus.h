#pragma once

namespace velmo::ExitStatus {

inline constexpr int success = 0;
inline constexpr int refused = 1;     ///< the daemon said no, or could not restore sleep yet
inline constexpr int usage = 2;       ///< the command line is wrong, or names no Mac
inline constexpr int unreachable = 3; ///< no daemon answers
inline constexpr int notExecutable = 126;
inline constexpr int notFound = 127;
inline constexpr int bySignal = 128; ///< plus the number of the signal

} // namespace velmo::ExitStatus
