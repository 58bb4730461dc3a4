#include "platform/host/CaptureLock.h"

#include "platform/posix/Io.h"

#include <fcntl.h>
#include <sys/file.h>

namespace velmo {

namespace {

constexpr mode_t fileMode = 0600;

} // namespace

bool CaptureLock::tryLock() {
    if (file_)
        return true;
    // O_NONBLOCK: a planted FIFO must not make the open wait.
    constexpr int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    Descriptor file(retryInterrupted([&] { return ::open(path_.c_str(), flags, fileMode); }));
    if (!file || !isRegularFile(file.get())
        || retryInterrupted([&] { return ::flock(file.get(), LOCK_EX | LOCK_NB); }) != 0)
        return false;
    file_ = std::move(file);
    return true;
}

} // namespace velmo
