#pragma once

#include "platform/posix/Descriptor.h"

#include <string>
#include <utility>

namespace velmo {

/// An exclusive lock among all processes that use the same path, on the file of that name. A
/// process takes the lock to capture a window (core/windows/CaptureGate.h). The lock is free again
/// when its owner is gone, however the owner ended.
///
///     CaptureLock lock(CaptureGate::lockPath(temporaryFolder));
///     if (CaptureGate::acquire(wait, poll, now, sleep, [&] { return lock.tryLock(); }))
///         capture();
class CaptureLock {
public:
    explicit CaptureLock(std::string path) : path_(std::move(path)) {}

    /// Takes the lock, without waiting for it. Returns whether this object has it now, or had it
    /// already. A missing file is made, for this user alone; a link, or anything but a regular
    /// file, can't be locked. A program that the owner starts meanwhile does not inherit the lock;
    /// a process that is only forked does.
    [[nodiscard]] bool tryLock();

    /// Gives the lock back. The file stays: if it were removed, two processes could lock two files
    /// of the same name.
    void unlock() { file_.reset(); }

private:
    std::string path_;
    Descriptor file_;
};

} // namespace velmo
