#include "tools/velmo-power/HoldCommand.h"

#include "platform/posix/ChildProcess.h"
#include "platform/posix/StandardStreams.h"
#include "tools/velmo-power/ExitStatus.h"
#include "tools/velmo-power/StatusText.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <memory>
#include <utility>

namespace velmo {

namespace {

HoldKeeper::Timer timerOn(asio::io_context& context) {
    return [&context](double seconds, std::function<void()> callback) {
        const auto delay = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
            std::chrono::duration<double>(seconds));
        const auto timer = std::make_shared<asio::steady_timer>(context, delay);
        timer->async_wait([timer, callback = std::move(callback)](const std::error_code& aborted) {
            if (!aborted)
                callback();
        });
    };
}

} // namespace

// A command's own output shares the terminal: no line is drawn over it, and its standard output
// stays its own.
HoldCommand::HoldCommand(asio::io_context& context, PowerAccess access, std::int64_t batteryFloor,
                         std::vector<std::string> command)
    : context_(context),
      access_(std::move(access)),
      batteryFloor_(batteryFloor),
      command_(std::move(command)),
      display_(command_.empty() ? STDOUT_FILENO : STDERR_FILENO, command_.empty()),
      keeper_(
          *access_.link, timerOn(context),
          [this](const HoldKeeper::Status& status) { statusChanged(status); }, batteryFloor),
      signals_(context, SIGINT, SIGTERM, SIGHUP),
      redraw_(context) {
    signals_.add(SIGCHLD);
}

int HoldCommand::run() {
    waitForSignal();
    keeper_.start();
    context_.run();
    return exitStatus_.value_or(ExitStatus::success);
}

void HoldCommand::statusChanged(const HoldKeeper::Status& status) {
    const bool holds = status.state == HoldKeeper::State::holding;
    const bool refused = status.state == HoldKeeper::State::refused;
    heldSince_ = holds ? std::optional(Clock::now()) : std::nullopt;
    if (!everHeld_ && !holds) {
        writeStandardError("velmo-power: " + holdText(status) + "\n");
        finish(refused ? ExitStatus::refused : ExitStatus::unreachable);
        return;
    }
    display_.say(holdText(status));
    if (!holds)
        return;
    if (!std::exchange(everHeld_, true) && !command_.empty())
        startCommand();
    if (display_.isLive())
        drawStatusEverySecond();
}

void HoldCommand::startCommand() {
    const std::vector<std::string_view> arguments(command_.begin() + 1, command_.end());
    child_ = startChild(command_.front(), arguments,
                        {.standardInput = STDIN_FILENO,
                         .standardOutput = STDOUT_FILENO,
                         .standardError = STDERR_FILENO});
    if (child_)
        return;
    const bool missing = errno == ENOENT;
    writeStandardError("velmo-power: " + command_.front()
                       + (missing ? ": not found\n" : ": can't be run\n"));
    finish(missing ? ExitStatus::notFound : ExitStatus::notExecutable);
}

void HoldCommand::waitForSignal() {
    signals_.async_wait([this](const std::error_code& aborted, int signal) {
        if (aborted)
            return;
        handleSignal(signal);
        waitForSignal();
    });
}

void HoldCommand::handleSignal(int signal) {
    if (signal == SIGCHLD) {
        reapCommand();
        return;
    }
    // A second signal does not wait for the daemon any longer; the lost connection releases too.
    if (exitStatus_)
        ::_exit(ExitStatus::bySignal + signal);
    if (!child_) {
        finish(ExitStatus::success);
        return;
    }
    // Ctrl-C reaches the command from the terminal itself. Its end is ours.
    if (signal != SIGINT)
        ::kill(*child_, signal);
}

void HoldCommand::reapCommand() {
    int status = 0;
    if (!child_ || ::waitpid(*child_, &status, WNOHANG) != *child_)
        return;
    child_.reset();
    finish(shellStatus(status));
}

void HoldCommand::drawStatusEverySecond() {
    if (!heldSince_ || exitStatus_)
        return;
    const std::chrono::duration<double> held = Clock::now() - *heldSince_;
    display_.showNow(heldLine(held.count(), batteryFloor_, readStatus(*access_.machine)));
    redraw_.expires_after(std::chrono::seconds(1));
    redraw_.async_wait([this](const std::error_code& aborted) {
        if (!aborted)
            drawStatusEverySecond();
    });
}

void HoldCommand::finish(int exitStatus) {
    if (exitStatus_)
        return;
    exitStatus_ = exitStatus;
    keeper_.stop([this, held = heldSince_.has_value()](bool restored) {
        if (held)
            display_.say(restored ? "released" : "the daemon has not enabled sleep again yet");
        if (!restored && exitStatus_ == ExitStatus::success)
            exitStatus_ = ExitStatus::refused;
        context_.stop();
    });
}

} // namespace velmo
