#pragma once

#include <functional>
#include <string>
#include <string_view>

/// One window capture at a time, across all processes of the host: whoever captures holds an
/// exclusive lock on one file. The lock itself is `CaptureLock` of platform/host.
namespace velmo::CaptureGate {

/// The lock file in the temporary folder, which must not be "": that would name the root folder.
std::string lockPath(std::string_view tmp);

/// Seconds of a clock that only runs forwards.
using Clock = std::function<double()>;
using Sleep = std::function<void(double seconds)>;
using TryLock = std::function<bool()>;

/// Whether the lock was got within `wait` seconds, trying at once and then every `poll` seconds.
/// There is one more try after the last sleep, even when that ended too late. A wait that is "not a
/// number" is none.
bool acquire(double wait, double poll, const Clock& now, const Sleep& sleep,
             const TryLock& tryLock);

} // namespace velmo::CaptureGate
