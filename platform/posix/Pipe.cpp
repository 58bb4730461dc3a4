#include "platform/posix/Pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace velmo {

std::optional<Pipe> makePipe() {
    int ends[2];
    if (::pipe(ends) != 0)
        return std::nullopt;
    Pipe pipe{.readEnd = Descriptor(ends[0]), .writeEnd = Descriptor(ends[1])};
    // macOS lacks pipe2. A child that another thread starts in between closes them by itself.
    if (::fcntl(ends[0], F_SETFD, FD_CLOEXEC) != 0 || ::fcntl(ends[1], F_SETFD, FD_CLOEXEC) != 0)
        return std::nullopt;
    return pipe;
}

bool isReaderGone(int writeEnd) {
    // Linux tells it as an error, macOS as a hang-up.
    pollfd asked{.fd = writeEnd, .events = 0, .revents = 0};
    return ::poll(&asked, 1, 0) > 0 && (asked.revents & (POLLERR | POLLHUP)) != 0;
}

} // namespace velmo
