#include "platform/posix/StandardStreams.h"

#include "platform/posix/Io.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace velmo {

namespace {

constexpr int untilReady = -1;

bool waitUntilWritable(int descriptor, int milliseconds) {
    pollfd watched{.fd = descriptor, .events = POLLOUT, .revents = 0};
    return retryInterrupted([&] { return ::poll(&watched, 1, milliseconds); }) != 0;
}

void offer(int descriptor, std::string_view text) {
    if (waitUntilWritable(descriptor, 0))
        retryInterrupted([&] { return ::write(descriptor, text.data(), text.size()); });
}

} // namespace

bool writeStandardOutput(std::string_view line) {
    while (!line.empty()) {
        const ssize_t count =
            retryInterrupted([&] { return ::write(STDOUT_FILENO, line.data(), line.size()); });
        if (count >= 0)
            line.remove_prefix(static_cast<std::size_t>(count));
        else if (errno == EAGAIN) // another process has made the pipe so
            waitUntilWritable(STDOUT_FILENO, untilReady);
        else
            return false;
    }
    return true;
}

void offerStandardOutput(std::string_view text) {
    offer(STDOUT_FILENO, text);
}

void writeStandardError(std::string_view line) {
    offer(STDERR_FILENO, line);
}

} // namespace velmo
