#pragma once

#include "platform/posix/Descriptor.h"

#include <string>
#include <utility>

namespace velmo {

/// An exclusive lock on a file, among all processes that use the same path: whoever captures a
/// window holds it (core/windows/CaptureGate.h). It ends with its holder, however that dies.
///
///     CaptureLock lock(CaptureGate::lockPath(temporaryFolder));
///     if (CaptureGate::acquire(wait, poll, now, sleep, [&] { return lock.tryLock(); }))
///         capture();
class CaptureLock {
public:
    explicit CaptureLock(std::string path) : path_(std::move(path)) {}

    /// Whether this object now holds the lock, or did already. Never waits. The file is made, for
    /// this user alone, when it is missing; false when it is a link or no regular file. A process
    /// that the holder starts meanwhile does not inherit the lock; one that is only forked does.
    [[nodiscard]] bool tryLock();

    /// The file stays: removing it would let two processes lock two files of the same name.
    void unlock() { file_.reset(); }

private:
    std::string path_;
    Descriptor file_;
};

} // namespace velmo
