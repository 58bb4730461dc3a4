#include "platform/posix/StandardStreams.h"

#include "platform/posix/Io.h"

#include <poll.h>
#include <unistd.h>

namespace velmo {

void writeStandardOutput(std::string_view line) {
    retryInterrupted([&] { return ::write(STDOUT_FILENO, line.data(), line.size()); });
}

void writeStandardError(std::string_view line) {
    pollfd standardError{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
    if (::poll(&standardError, 1, 0) != 0)
        retryInterrupted([&] { return ::write(STDERR_FILENO, line.data(), line.size()); });
}

} // namespace velmo
