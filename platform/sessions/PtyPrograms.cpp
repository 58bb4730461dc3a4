#include "platform/sessions/PtyPrograms.h"

#include "platform/posix/Io.h"
#include "platform/sessions/PseudoTerminal.h"
#include "platform/sessions/WatchedDescriptor.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <utility>
#include <vector>

namespace velmo {

namespace {

class PtyProgram final : public Program {
public:
    PtyProgram(std::shared_ptr<WatchedDescriptor> terminal, pid_t process)
        : terminal_(std::move(terminal)), process_(process) {}

    PtyProgram(const PtyProgram&) = delete;
    PtyProgram& operator=(const PtyProgram&) = delete;

    ~PtyProgram() override { terminal_->close(); }

    [[nodiscard]] std::uint32_t pid() const override {
        return static_cast<std::uint32_t>(process_);
    }

    [[nodiscard]] Output read(std::span<std::uint8_t> room) override {
        const ssize_t count =
            retryInterrupted([&] { return ::read(terminal_->get(), room.data(), room.size()); });
        if (count > 0)
            return {.bytes = static_cast<std::size_t>(count)};
        // Once no program has the terminal open any more, Linux gives EIO and macOS 0 bytes.
        return {.isOver = count == 0 || errno != EAGAIN};
    }

    [[nodiscard]] std::size_t write(ByteView keys) override {
        const ssize_t count =
            retryInterrupted([&] { return ::write(terminal_->get(), keys.data(), keys.size()); });
        if (count < 0 && errno != EAGAIN)
            return keys.size(); // dropped: no program can read them any more
        return count < 0 ? 0 : static_cast<std::size_t>(count);
    }

    void setSize(PtyFrame::Size size) override { setWindowSize(terminal_->get(), size); }

    void signalForeground(int signal) override {
        signalForegroundJob(terminal_->get(), process_, signal);
    }

    bool signalAll(int signal) override {
        return signalSession(terminal_->get(), process_, signal);
    }

    void watch(bool readable, bool writable) override { terminal_->watch(readable, writable); }

private:
    std::shared_ptr<WatchedDescriptor> terminal_;
    pid_t process_;
};

} // namespace

PtyPrograms::PtyPrograms(asio::io_context& context, Events events, const rlimit& openFiles)
    : context_(context),
      events_(std::move(events)),
      openFiles_(openFiles),
      ends_(context, SIGCHLD) {
    waitForEnds();
}

std::shared_ptr<Program> PtyPrograms::start(SessionNumber session, const SpawnRequest& request,
                                            const Pty::Environment& environment) {
    auto started = startOnPseudoTerminal(request, environment, openFiles_);
    if (!started)
        return nullptr;
    const auto ready = [this, session] { events_.ready(session); };
    running_.emplace(started->process, session);
    return std::make_shared<PtyProgram>(
        WatchedDescriptor::make(context_, std::move(started->terminal), ready, ready),
        started->process);
}

void PtyPrograms::waitForEnds() {
    ends_.async_wait([this](const std::error_code& aborted, int /*signal*/) {
        if (aborted)
            return;
        waitForEnds();
        reap();
    });
}

/// Reports all programs that have ended, since one SIGCHLD may stand for several of them.
void PtyPrograms::reap() {
    std::vector<std::pair<SessionNumber, int>> ended;
    std::erase_if(running_, [&](const auto& program) {
        int status = 0;
        if (::waitpid(program.first, &status, WNOHANG) != program.first)
            return false;
        ended.emplace_back(program.second, status);
        return true;
    });
    for (const auto& [session, status] : ended)
        events_.ended(session, status);
}

} // namespace velmo
