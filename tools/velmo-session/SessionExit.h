#pragma once

/// The exit statuses of velmo-session. A viewer that sees its program end hands on the program's
/// own code, 0 to 255. The other numbers are ones that programs rarely end with.
namespace velmo::SessionExit {

inline constexpr int success = 0;     ///< done; a viewer: detached
inline constexpr int usage = 122;     ///< the command line is wrong
inline constexpr int refused = 123;   ///< by the host, or by another host that serves already
inline constexpr int unwritten = 125; ///< what was asked for can't be written to standard output
inline constexpr int hostGone = 124;  ///< the host went away, or can't be reached
inline constexpr int bySignal = 128;  ///< plus the number of the signal that ended the viewer

} // namespace velmo::SessionExit
