#pragma once

#include <functional>
#include <string>
#include <string_view>

/// Lets only one of the host's processes capture a window at a time: a process captures only while
/// it has the exclusive lock on one file. `CaptureLock` of platform/host is that lock.
namespace velmo::CaptureGate {

/// Returns the path of the lock file in the temporary folder `tmp`, which must not be "": the file
/// would then lie in the root folder.
std::string lockPath(std::string_view tmp);

/// Returns the seconds of a clock that is never set back.
using Clock = std::function<double()>;
using Sleep = std::function<void(double seconds)>;
using TryLock = std::function<bool()>;

/// Tries to take the lock at once and then every `poll` seconds, until `wait` seconds are over, and
/// tells whether it succeeded. The last attempt follows the last sleep, even if that sleep ended
/// too late. A wait that is "not a number" counts as 0.
bool acquire(double wait, double poll, const Clock& now, const Sleep& sleep,
             const TryLock& tryLock);

} // namespace velmo::CaptureGate
