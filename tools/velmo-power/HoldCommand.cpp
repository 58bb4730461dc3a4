#include "tools/velmo-power/HoldCommand.h"

#include "platform/posix/ChildProcess.h"
#include "platform/posix/Clocks.h"
#include "platform/posix/Io.h"
#include "platform/posix/ProcessEnd.h"
#include "platform/posix/UserCommand.h"
#include "tools/velmo-power/Conversation.h"
#include "tools/velmo-power/ExitStatus.h"

#include "machine/PowerReadings.h"
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <iterator>
#include <system_error>
#include <utility>

namespace velmo {

namespace {

constexpr double tickInterval = 1.0;    ///< seconds
constexpr double displayOffDelay = 1.0; ///< seconds that the lid is shut
/// A second signal within this time counts as a repeat of the first, because `timeout` sends a
/// signal to the process and then to its whole group. A later one means not to wait any longer.
constexpr double impatience = 1.0; ///< seconds
constexpr std::chrono::milliseconds lastWords(500);

/// The signals that end a hold without a command, and that are passed on to a command.
constexpr auto endingSignals = std::to_array({SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2});

std::vector<int> signalsToTake(const ProcessBirth& birth) {
    std::vector<int> signals;
    // One that was ignored at our birth is left so, for us and for the command.
    std::ranges::copy_if(endingSignals, std::back_inserter(signals),
                         [&](int signal) { return !birth.ignored(signal); });
    if (!birth.ignored(SIGTSTP))
        signals.push_back(SIGTSTP);
    signals.push_back(SIGCHLD);
    return signals;
}

} // namespace

// A command's own output shares the terminal: no line is drawn over it, and standard output is left
// to the command.
HoldCommand::HoldCommand(asio::io_context& context, PowerAccess access, HoldRequest request,
                         const ProcessBirth& birth)
    : context_(context),
      access_(std::move(access)),
      request_(std::move(request)),
      birth_(birth),
      display_(request_.command.empty() ? STDOUT_FILENO : STDERR_FILENO,
               request_.command.empty() && !request_.isQuiet),
      complaints_(STDERR_FILENO, false),
      signals_(signalsToTake(birth)),
      signalEnd_(context),
      processEnd_(request_.limits.process ? processEnd(static_cast<pid_t>(*request_.limits.process))
                                          : Descriptor()),
      keeper_(
          *access_.link,
          [this](double seconds, std::function<void()> callback) {
              after(seconds, std::move(callback));
          },
          [this](const HoldKeeper::Status& status) { statusChanged(status); },
          {.batteryFloor = request_.floor, .persist = request_.persists, .rides = request_.rides}),
      limits_(request_.limits, access_.machine->steadyTime()),
      ready_(request_.readyDescriptor.value_or(-1)) {
}

int HoldCommand::run() {
    // Writing to a terminal from its background must not stop the heartbeats.
    static_cast<void>(std::signal(SIGTTOU, SIG_IGN));
    if (const auto why = whyUsageIsWrong()) {
        complain(*why);
        complaints_.finish(lastWords);
        return failure(ExitStatus::usage);
    }
    signalEnd_.assign(::dup(signals_.descriptor()));
    waitForSignals();
    after(Conversation::untilWaitIsTold, [this] {
        if (keeper_.status().state == HoldKeeper::State::connecting && !exitStatus_ && !awakeSince_)
            say("waiting for the power daemon to answer");
    });
    tick();
    if (request_.limits.onlyOnMains && readPower(*access_.machine).ac == false)
        noHoldAtAll("--ac-only: the Mac runs on its battery", ExitStatus::refused);
    else
        keeper_.start();
    context_.run();
    display_.finish(lastWords);
    complaints_.finish(lastWords);
    if (endSignal_ != 0) {
        endBySignal(endSignal_);
        return ExitStatus::bySignal + endSignal_; // one that does not end a process
    }
    return exitStatus_.value_or(ExitStatus::success);
}

std::optional<std::string> HoldCommand::whyUsageIsWrong() {
    if (request_.limits.untilLidOpens && !access_.machine->lid())
        return "--until-lid-opens: this Mac has no lid";
    if (request_.limits.process && !processEnd_)
        return "--pid " + std::to_string(*request_.limits.process) + ": there is no such process";
    return std::nullopt;
}

void HoldCommand::after(double seconds, std::function<void()> callback) {
    const auto timer = std::make_shared<asio::steady_timer>(context_, Clocks::duration(seconds));
    timer->async_wait([timer, callback = std::move(callback)](const std::error_code& aborted) {
        if (!aborted)
            callback();
    });
}

// Signals.

void HoldCommand::waitForSignals() {
    signalEnd_.async_wait(asio::posix::stream_descriptor::wait_read,
                          [this](const std::error_code& aborted) {
                              if (aborted)
                                  return;
                              while (const auto news = signals_.next())
                                  handleSignal(*news);
                              waitForSignals();
                          });
}

void HoldCommand::handleSignal(SignalPipe::News news) {
    if (news.signal == SIGCHLD) {
        reapCommand();
        return;
    }
    if (news.signal == SIGTSTP) {
        passOn(news);
        suspend();
        return;
    }
    if (child_) {
        passOn(news);
    } else if (!exitStatus_) {
        if (request_.command.empty())
            finish(ExitStatus::success);
        else
            finishBySignal(news.signal);
    } else if (endsSince_ && access_.machine->steadyTime() - *endsSince_ >= impatience) {
        // The lost connection ends the hold too.
        complain("not waiting any longer; the power daemon enables sleep by itself");
        complaints_.finish(lastWords);
        ::_exit(failure(ExitStatus::refused));
    }
}

/// Passes a signal on to the command if a process sent it. What the terminal sends reaches the
/// command by itself.
void HoldCommand::passOn(SignalPipe::News news) {
    if (child_ && news.fromProcess)
        ::kill(*child_, news.signal);
}

void HoldCommand::suspend() {
    if (exitStatus_)
        return;
    if (!wantsHold_) {
        goOn();
        return;
    }
    say("stopped: the hold is given up meanwhile");
    idleSleepPrevented_.reset();
    keeper_.stop([this](HoldKeeper::Outcome /*outcome*/) { goOn(); });
}

/// Stops this process, as the signal does by default. Once continued, the process goes on from
/// here.
void HoldCommand::goOn() {
    display_.finish(lastWords);
    raiseByDefault(SIGTSTP);
    SignalPipe::take(SIGTSTP);
    if (child_)
        ::kill(*child_, SIGCONT);
    if (!wantsHold_)
        return;
    say("going on: asking for the hold again");
    keeper_.start();
}

// The hold.

void HoldCommand::statusChanged(const HoldKeeper::Status& status) {
    const bool isAwake =
        status.state == HoldKeeper::State::holding || status.state == HoldKeeper::State::riding;
    enabledIsTold_ = enabledIsAsked_ = false;
    if (isAwake)
        awake(status);
    else if (awakeSince_)
        notAwake(status);
    else if (status.state != HoldKeeper::State::connecting)
        noHoldAtAll(holdText(status), status.state == HoldKeeper::State::refused
                                          ? ExitStatus::refused
                                          : ExitStatus::unreachable);
}

void HoldCommand::awake(const HoldKeeper::Status& status) {
    if (!idleSleepPrevented_ && access_.preventIdleSleep)
        idleSleepPrevented_ = access_.preventIdleSleep();
    say(holdText(status));
    if (awakeSince_)
        return;
    awakeSince_ = access_.machine->steadyTime();
    tellReady();
    if (!request_.command.empty() && !child_)
        startCommand();
}

/// Ends, or runs the command without a hold, if the first hold can't be had.
void HoldCommand::noHoldAtAll(const std::string& why, int exitStatus) {
    if (!request_.runsAnyway) {
        complain(why);
        finish(failure(exitStatus));
        return;
    }
    complain(why + "; running " + request_.command.front() + " without a hold");
    dropHold();
    tellReady();
    startCommand();
}

/// Handles the loss of a hold, and every further status until the Mac is held awake again.
void HoldCommand::notAwake(const HoldKeeper::Status& status) {
    idleSleepPrevented_.reset();
    const bool asksAnew = status.state == HoldKeeper::State::connecting && status.reason.empty();
    if (asksAnew)
        return;
    if (request_.endsCommandOnLoss && child_) {
        complain(holdText(status) + "; ending " + request_.command.front());
        dropHold();
        ::kill(*child_, SIGTERM);
        return;
    }
    if (status.state == HoldKeeper::State::released)
        giveUpHold("released by another client");
    else
        say(holdText(status));
}

void HoldCommand::giveUpHold(const std::string& why) {
    const std::string text = "the hold is over: " + why;
    if (!child_) {
        say(text);
        finish(ExitStatus::success);
        return;
    }
    say(text + "; " + request_.command.front() + " runs on");
    dropHold();
}

/// Gives up the hold while the command runs on.
void HoldCommand::dropHold() {
    wantsHold_ = false;
    isDropping_ = true;
    idleSleepPrevented_.reset();
    keeper_.stop([this](HoldKeeper::Outcome outcome) {
        isDropping_ = false;
        if (awakeSince_ && !isKnownToBeRestored(outcome))
            complain("sleep may still be disabled");
        if (exitStatus_)
            context_.stop();
    });
}

// The command.

void HoldCommand::startCommand() {
    const auto child = velmo::startCommand(request_.command, birth_);
    if (child) {
        child_ = *child;
        return;
    }
    const bool isMissing = child.error() == ENOENT;
    complain(request_.command.front() + (isMissing ? ": not found" : ": can't be run: ")
             + (isMissing ? "" : std::generic_category().message(child.error())));
    finish(isMissing ? ExitStatus::notFound : ExitStatus::notExecutable);
}

/// Tells the process in front, which waits for the hold, that it may end.
void HoldCommand::tellReady() {
    if (!ready_)
        return;
    writeAll(ready_.get(), "!");
    ready_.reset();
    if (!request_.command.empty())
        return;
    // Whoever reads what this process writes would wait for its end.
    const Descriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(null.get(), stream);
}

void HoldCommand::reapCommand() {
    int status = 0;
    if (!child_ || ::waitpid(*child_, &status, WNOHANG) != *child_)
        return;
    child_.reset();
    if (WIFSIGNALED(status))
        finishBySignal(WTERMSIG(status));
    else
        finish(WEXITSTATUS(status));
}

// What is looked at every second, without waiting: the sleep setting is read by its property alone.

void HoldCommand::tick() {
    if (exitStatus_)
        return;
    if (awakeSince_ && wantsHold_) {
        const PowerStatus status = readStatus(*access_.machine, false);
        watchSetting(status);
        watchLid();
        watchProcess();
        draw(status);
        watchLimits(status);
    }
    after(tickInterval, [this] { tick(); });
}

/// Looks for sleep that is enabled during the hold. The hold may have ended, so the daemon is asked
/// before people are told.
void HoldCommand::watchSetting(const PowerStatus& status) {
    const auto state = keeper_.status().state;
    const bool isHeld = state == HoldKeeper::State::holding || state == HoldKeeper::State::riding;
    if (status.sleepDisabled != false || !isHeld) {
        enabledIsAsked_ = false;
        return;
    }
    if (!std::exchange(enabledIsAsked_, true)) {
        keeper_.checkNow();
        return;
    }
    if (!std::exchange(enabledIsTold_, true))
        complain("sleep is enabled although the hold is in force: somebody else has enabled it");
}

void HoldCommand::watchLid() {
    const auto lid = access_.machine->lid();
    if (!request_.displayOff || !lid || !lid->isShut || !lid->causesSleep) {
        lidShutSince_.reset();
        displayIsOff_ = false;
        return;
    }
    const SteadyTime now = access_.machine->steadyTime();
    if (!lidShutSince_)
        lidShutSince_ = now;
    if (displayIsOff_ || now - *lidShutSince_ < displayOffDelay)
        return;
    displayIsOff_ = true;
    access_.turnDisplayOff();
}

void HoldCommand::watchProcess() {
    if (processEnd_ && !processHasEnded_)
        processHasEnded_ = hasEnded(processEnd_);
}

LimitWatch::Facts HoldCommand::facts(const PowerStatus& status) const {
    return {.now = access_.machine->steadyTime(),
            .date = access_.machine->wallTime(),
            .onMains = status.ac,
            .lidIsShut = status.lid.transform([](const auto& lid) { return lid == "shut"; }),
            .processHasEnded = processHasEnded_};
}

void HoldCommand::watchLimits(const PowerStatus& status) {
    if (const auto why = limits_.reached(facts(status)))
        giveUpHold(*why);
}

void HoldCommand::draw(const PowerStatus& status) {
    const auto& held = keeper_.status();
    const bool rides = held.state == HoldKeeper::State::riding;
    if (!rides && held.state != HoldKeeper::State::holding)
        return;
    const HeldLine line{
        .seconds = access_.machine->steadyTime() - *awakeSince_,
        .floor = request_.floor,
        .riding = rides ? held.holder.transform(holderText).value_or("another client") : "",
        .until = limits_.waitsFor(facts(status))};
    display_.showNow(line.text(status));
}

// The end.

void HoldCommand::finish(int exitStatus) {
    if (exitStatus_)
        return;
    exitStatus_ = exitStatus;
    endsSince_ = access_.machine->steadyTime();
    idleSleepPrevented_.reset();
    if (!wantsHold_ && !isDropping_) {
        context_.stop();
        return;
    }
    after(Conversation::untilWaitIsTold,
          [this] { say("waiting for the power daemon to enable sleep again"); });
    if (!wantsHold_)
        return;
    keeper_.stop([this](HoldKeeper::Outcome outcome) { keeperStopped(outcome); });
}

void HoldCommand::finishBySignal(int signal) {
    endSignal_ = signal;
    finish(ExitStatus::bySignal + signal);
}

void HoldCommand::keeperStopped(HoldKeeper::Outcome outcome) {
    context_.stop();
    if (!awakeSince_)
        return;
    if (outcome == HoldKeeper::Outcome::notHeld) {
        say("ended; another client holds");
        return;
    }
    if (isKnownToBeRestored(outcome)) {
        const bool held = keeper_.status().state == HoldKeeper::State::holding;
        say(held ? "released" : "ended; nobody holds");
        return;
    }
    complain(outcome == HoldKeeper::Outcome::pending
                 ? "the power daemon has not enabled sleep again yet; it keeps trying"
                 : "sleep may still be disabled: the power daemon did not answer");
    if (exitStatus_ == ExitStatus::success && request_.command.empty())
        exitStatus_ = ExitStatus::refused;
}

/// Tells whether the sleep setting is known to be restored, or is another client's by now. If the
/// daemon did not answer, a setting that reads enabled counts as restored.
bool HoldCommand::isKnownToBeRestored(HoldKeeper::Outcome outcome) const {
    return outcome == HoldKeeper::Outcome::restored || outcome == HoldKeeper::Outcome::notHeld
           || (outcome == HoldKeeper::Outcome::unknown
               && access_.machine->sleepDisabledProperty() == false);
}

int HoldCommand::failure(int exitStatus) const {
    return request_.command.empty() ? exitStatus : ExitStatus::withCommand;
}

void HoldCommand::say(const std::string& text) {
    if (!request_.isQuiet)
        display_.say(request_.command.empty() ? text : "velmo-power: " + text);
}

void HoldCommand::complain(const std::string& text) {
    display_.clear();
    complaints_.say("velmo-power: " + text);
}

} // namespace velmo
