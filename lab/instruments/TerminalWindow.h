#pragma once

#include "core/terminal/PtyFrame.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/Io.h"
#include "platform/sessions/PseudoTerminal.h"

#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// A terminal window with a program in it: a pseudo-terminal, with this process on the other side
/// to read and to type. The destructor closes the window and kills the program.
class TerminalWindow {
public:
    /// The waits below give up after this time, which is far beyond what any of them needs.
    static constexpr std::chrono::seconds patience{30};

    TerminalWindow(std::vector<std::string> words, const Pty::Environment& environment,
                   PtyFrame::Size size = {.cols = 80, .rows = 24}) {
        rlimit openFiles{};
        ::getrlimit(RLIMIT_NOFILE, &openFiles);
        auto started = startOnPseudoTerminal({.cwd = "/",
                                              .cols = size.cols,
                                              .rows = size.rows,
                                              .program = words.front(),
                                              .argv = words},
                                             environment, openFiles);
        if (!started)
            throw std::runtime_error(words.front() + " can't be started");
        terminal_ = std::move(started->terminal);
        process_ = started->process;
    }

    TerminalWindow(const TerminalWindow&) = delete;
    TerminalWindow& operator=(const TerminalWindow&) = delete;

    ~TerminalWindow() {
        signal(SIGKILL);
        static_cast<void>(waitForEnd());
    }

    [[nodiscard]] int get() const { return terminal_.get(); }

    /// Returns the program's process id while it has not been waited for.
    [[nodiscard]] pid_t process() const { return process_.value_or(-1); }

    void type(std::string_view keys) const { writeAll(terminal_.get(), keys); }

    void resize(PtyFrame::Size size) const { setWindowSize(terminal_.get(), size); }

    void signal(int number) const {
        if (process_)
            ::kill(*process_, number);
    }

    /// Closes the window, as its user does: the program gets a hang-up.
    void close() { terminal_.reset(); }

    /// Reads on until the text has been shown. What earlier waits have used up does not count.
    [[nodiscard]] bool shows(std::string_view text) {
        const auto deadline = Clock::now() + patience;
        std::size_t found = 0;
        while ((found = shown_.find(text, used_)) == std::string::npos) {
            if (!readSome(deadline))
                return false;
        }
        used_ = found + text.size();
        return true;
    }

    /// Returns everything that was shown so far.
    [[nodiscard]] const std::string& shown() const { return shown_; }

    /// Reads to the end and returns the program's status as a shell tells it.
    [[nodiscard]] std::optional<int> waitForEnd() {
        if (!process_)
            return std::nullopt;
        const auto deadline = Clock::now() + patience;
        while (terminal_ && readSome(deadline)) {
        }
        const pid_t process = *process_;
        process_.reset();
        return waitForChild(process);
    }

private:
    using Clock = std::chrono::steady_clock;

    bool readSome(Clock::time_point deadline) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd watched{.fd = terminal_.get(), .events = POLLIN, .revents = 0};
        const int timeout = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
        if (retryInterrupted([&] { return ::poll(&watched, 1, timeout); }) != 1)
            return false;
        char buffer[65536];
        const ssize_t count =
            retryInterrupted([&] { return ::read(terminal_.get(), buffer, sizeof buffer); });
        if (count <= 0)
            return false;
        shown_.append(buffer, static_cast<std::size_t>(count));
        return true;
    }

    Descriptor terminal_;
    std::optional<pid_t> process_;
    std::string shown_;
    std::size_t used_ = 0; ///< bytes of `shown_` that waits have used up
};

} // namespace velmo
