#include "tools/velmo-power/HoldCommand.h"

#include "machine/PowerReadings.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/Clocks.h"
#include "platform/posix/Io.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/ProcessEnd.h"
#include "platform/posix/UserCommand.h"
#include "tools/velmo-power/Conversation.h"
#include "tools/velmo-power/ExitStatus.h"

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

constexpr double tickInterval = 1.0; ///< seconds
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

/// The process in front prints a process id, to which nothing may be added.
bool isQuiet(const HoldRequest& request) {
    return request.isQuiet || request.readyDescriptor;
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
      run_(request_, access_.machine->steadyTime()),
      display_(request_.command.empty() ? STDOUT_FILENO : STDERR_FILENO,
               request_.command.empty() && !isQuiet(request_)),
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
          [this](const HoldKeeper::Status& status) {
              report([this, status] { return run_.statusChanged(status, now()); });
          },
          {.batteryFloor = request_.floor, .persist = request_.persists, .rides = request_.rides}),
      ready_(request_.readyDescriptor.value_or(-1)) {
}

int HoldCommand::run() {
    // Writing to a terminal from its background must not stop the heartbeats.
    static_cast<void>(std::signal(SIGTTOU, SIG_IGN));
    if (const auto why = whyUsageIsWrong()) {
        complain(*why);
        complaints_.finish(lastWords);
        return request_.command.empty() ? ExitStatus::usage : ExitStatus::withCommand;
    }
    signalEnd_.assign(::dup(signals_.descriptor()));
    waitForSignals();
    report([this] { return run_.started(readFacts(readStatus(*access_.machine, false)).limits); });
    tick();
    context_.run();
    display_.finish(lastWords);
    complaints_.finish(lastWords);
    if (endSignal_ != 0) {
        endBySignal(endSignal_);
        return ExitStatus::bySignal + endSignal_; // one that does not end a process
    }
    return exitStatus_;
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

void HoldCommand::report(std::function<HoldRun::Actions()> event) {
    events_.push_back(std::move(event));
    if (events_.size() > 1)
        return;
    while (!events_.empty()) {
        for (const HoldRun::Action& action : events_.front()())
            carryOut(action);
        events_.pop_front();
    }
}

void HoldCommand::carryOut(const HoldRun::Action& action) {
    using Kind = HoldRun::Kind;
    switch (action.kind) {
    case Kind::say:
        say(action.text);
        break;
    case Kind::complain:
        complain(action.text);
        break;
    case Kind::askForHold:
        keeper_.start();
        break;
    case Kind::checkHold:
        keeper_.checkNow();
        break;
    case Kind::giveUpHold:
        keeper_.stop([this](HoldKeeper::Outcome outcome) {
            report([this, outcome] {
                return run_.gaveUp(outcome, access_.machine->sleepDisabledProperty());
            });
        });
        break;
    case Kind::preventIdleSleep:
        if (!idleSleepPrevented_ && access_.preventIdleSleep)
            idleSleepPrevented_ = access_.preventIdleSleep();
        break;
    case Kind::allowIdleSleep:
        idleSleepPrevented_.reset();
        break;
    case Kind::turnDisplayOff:
        access_.turnDisplayOff();
        break;
    case Kind::tellFront:
        tellFront();
        break;
    case Kind::startCommand:
        startCommand();
        break;
    case Kind::signalCommand:
        if (child_)
            ::kill(*child_, action.number);
        break;
    case Kind::stopSelf:
        stopSelf(action.number);
        break;
    case Kind::awaitAnswer:
        after(Conversation::untilWaitIsTold,
              [this] { report([this] { return run_.answerIsLate(); }); });
        break;
    case Kind::awaitRelease:
        after(Conversation::untilWaitIsTold,
              [this] { report([this] { return run_.releaseIsLate(); }); });
        break;
    case Kind::end:
        end(action.number);
        break;
    case Kind::endBySignal:
        end(ExitStatus::bySignal + action.number, action.number);
        break;
    case Kind::endAtOnce:
        complaints_.finish(lastWords);
        ::_exit(action.number);
    }
}

void HoldCommand::end(int exitStatus, int signal) {
    exitStatus_ = exitStatus;
    endSignal_ = signal;
    context_.stop();
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
        lookAtCommand();
        return;
    }
    report([this, news] {
        return run_.signalled({.number = news.signal, .fromTerminal = news.fromTerminal}, now());
    });
}

/// Stops this process, as the signal does by default. Once continued, the process goes on from
/// here.
void HoldCommand::stopSelf(int signal) {
    display_.finish(lastWords);
    complaints_.finish(lastWords);
    raiseByDefault(signal);
    if (signal == SIGTSTP)
        SignalPipe::take(SIGTSTP);
    if (signal == SIGTTOU)
        static_cast<void>(std::signal(SIGTTOU, SIG_IGN));
    report([this] { return run_.continued(); });
}

// The command.

void HoldCommand::startCommand() {
    const auto child = velmo::startCommand(request_.command, birth_);
    if (child) {
        child_ = *child;
        report([this] { return run_.commandStarted(); });
        return;
    }
    const auto why = child.error() == ENOENT
                         ? std::nullopt
                         : std::optional(std::generic_category().message(child.error()));
    report([this, why] { return run_.commandNotStarted(why, now()); });
}

void HoldCommand::lookAtCommand() {
    int status = 0;
    while (child_ && ::waitpid(*child_, &status, WNOHANG | WUNTRACED) == *child_) {
        if (WIFSTOPPED(status)) {
            report(
                [this, signal = WSTOPSIG(status)] { return run_.commandStopped(signal, now()); });
            continue;
        }
        child_.reset();
        const HoldRun::End end = WIFSIGNALED(status) ? HoldRun::End{.signal = WTERMSIG(status)}
                                                     : HoldRun::End{.status = WEXITSTATUS(status)};
        report([this, end] { return run_.commandEnded(end, now()); });
    }
}

/// Tells the process in front, which waits for the hold, that it may end.
void HoldCommand::tellFront() {
    const bool isThere = writeAll(ready_.get(), "!");
    ready_.reset();
    if (isThere && request_.command.empty()) {
        // A program that reads what this process writes would wait for its end.
        const Descriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::dup2(null.get(), stream);
        // A disk that this process was started on may be taken away.
        static_cast<void>(::chdir("/") == 0);
    }
    report([this, isThere] { return run_.frontTold(isThere, now()); });
}

// What is looked at every second, without waiting: the sleep setting is read by its property alone.

void HoldCommand::tick() {
    if (run_.state().end)
        return;
    const PowerStatus status = readStatus(*access_.machine, false);
    const HoldRun::Facts facts = readFacts(status);
    report([this, facts] { return run_.ticked(facts); });
    draw(status, facts.limits);
    after(tickInterval, [this] { tick(); });
}

HoldRun::Facts HoldCommand::readFacts(const PowerStatus& status) {
    if (processEnd_ && !processHasEnded_)
        processHasEnded_ = hasEnded(processEnd_);
    const auto lid = access_.machine->lid();
    return {.limits = {.now = now(),
                       .date = access_.machine->wallTime(),
                       .onMains = status.ac,
                       .lidIsShut = lid.transform([](const LidState& each) { return each.isShut; }),
                       .processHasEnded = processHasEnded_},
            .sleepDisabled = status.sleepDisabled,
            .lidWouldSleep = lid && lid->isShut && lid->causesSleep,
            .checkIsUnanswered = keeper_.isWaiting(),
            .frontIsGone = ready_ && isReaderGone(ready_.get())};
}

void HoldCommand::draw(const PowerStatus& status, const LimitWatch::Facts& facts) {
    if (!run_.state().awakeSince)
        return;
    const auto& holder = keeper_.status().holder;
    const bool rides = keeper_.status().state == HoldKeeper::State::riding;
    const HeldLine line{
        .seconds = run_.awakeFor(facts.now),
        .floor = rides && holder ? BatteryFloor(holder->batteryFloor) : request_.floor,
        .riding = rides ? holder.transform(holderText).value_or("another client") : "",
        .until = run_.waitsFor(facts)};
    display_.showNow(line.text(status));
}

void HoldCommand::say(const std::string& text) {
    if (!isQuiet(request_))
        display_.say(request_.command.empty() ? text : "velmo-power: " + text);
}

void HoldCommand::complain(const std::string& text) {
    display_.clear();
    complaints_.say("velmo-power: " + text);
}

} // namespace velmo
