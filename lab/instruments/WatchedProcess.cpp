#include "lab/instruments/WatchedProcess.h"

#include "platform/posix/Io.h"
#include "platform/posix/Pipe.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <system_error>
#include <utility>

namespace velmo {

using Clock = std::chrono::steady_clock;

WatchedProcess::WatchedProcess(const std::string& program,
                               std::span<const std::string_view> arguments, OnLine onLine,
                               ChildGroup group)
    : onLine_(std::move(onLine)) {
    auto pipe = makePipe();
    const auto child = pipe ? startChild(program, arguments,
                                         {.standardInput = STDIN_FILENO,
                                          .standardOutput = pipe->writeEnd.get(),
                                          .standardError = pipe->writeEnd.get()},
                                         group)
                            : std::nullopt;
    if (!child)
        throw std::system_error(errno, std::generic_category(), program);
    pid_ = *child;
    output_ = std::move(pipe->readEnd);
}

WatchedProcess::~WatchedProcess() {
    if (reaped_)
        return;
    signal(SIGKILL);
    waitForChild(pid_);
}

bool WatchedProcess::waitForLine(std::string_view text) {
    const auto deadline = Clock::now() + patience;
    do {
        while (used_ < lines_.size()) {
            if (lines_[used_++].contains(text))
                return true;
        }
    } while (readSome(deadline) == Reading::gotSome);
    return false;
}

void WatchedProcess::signal(int number) const {
    ::kill(pid_, number);
}

void WatchedProcess::killGroup() {
    ::killpg(pid_, SIGKILL);
    waitForChild(pid_);
    reaped_ = true;
}

std::optional<int> WatchedProcess::waitForEnd() {
    const auto deadline = Clock::now() + patience;
    Reading reading = Reading::gotSome;
    while (reading == Reading::gotSome)
        reading = readSome(deadline);
    if (reading == Reading::timedOut || reaped_)
        return std::nullopt;
    reaped_ = true;
    return waitForChild(pid_);
}

WatchedProcess::Reading WatchedProcess::readSome(Clock::time_point deadline) {
    if (!output_)
        return Reading::ended;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    pollfd watched{.fd = output_.get(), .events = POLLIN, .revents = 0};
    const int timeout = static_cast<int>(std::max(left.count(), std::int64_t{0}));
    if (retryInterrupted([&] { return ::poll(&watched, 1, timeout); }) != 1)
        return Reading::timedOut;
    char buffer[4096];
    const ssize_t count =
        retryInterrupted([&] { return ::read(output_.get(), buffer, sizeof buffer); });
    if (count <= 0)
        return Reading::ended;
    partial_.append(buffer, static_cast<std::size_t>(count));
    takeLines();
    return Reading::gotSome;
}

void WatchedProcess::takeLines() {
    std::size_t begin = 0;
    for (std::size_t end = partial_.find('\n'); end != std::string::npos;
         end = partial_.find('\n', begin)) {
        lines_.push_back(partial_.substr(begin, end - begin));
        if (onLine_)
            onLine_(lines_.back());
        begin = end + 1;
    }
    partial_.erase(0, begin);
}

} // namespace velmo
