#include "platform/posix/ProcessEnd.h"

#include "platform/posix/Io.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace velmo {

// Linux has the call since 5.3, glibc a name for it only since 2.36. The descriptor is closed on
// exec.
Descriptor processEnd(pid_t process) {
    return Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}

bool hasEnded(const Descriptor& processEnd) {
    pollfd watched{.fd = processEnd.get(), .events = POLLIN, .revents = 0};
    return retryInterrupted([&] { return ::poll(&watched, 1, 0); }) == 1;
}

} // namespace velmo
