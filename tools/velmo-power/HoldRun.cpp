#include "tools/velmo-power/HoldRun.h"

#include "tools/velmo-power/ExitStatus.h"
#include "tools/velmo-power/StatusText.h"

#include <csignal>
#include <utility>

namespace velmo {

namespace {

bool isAwake(HoldKeeper::State state) {
    return state == HoldKeeper::State::holding || state == HoldKeeper::State::riding;
}

/// Returns how a hold was lost, without what is done about it.
std::string lossText(const HoldKeeper::Status& status) {
    return status.state == HoldKeeper::State::connecting ? std::string(endingText(status.reason))
                                                         : holdText(status);
}

/// Tells whether the sleep setting is known to be restored, or is another client's by now. If the
/// daemon did not answer, a setting that reads enabled counts as restored.
bool isKnownToBeRestored(HoldKeeper::Outcome outcome, std::optional<bool> sleepDisabled) {
    return outcome == HoldKeeper::Outcome::restored || outcome == HoldKeeper::Outcome::notHeld
           || (outcome == HoldKeeper::Outcome::unknown && sleepDisabled == false);
}

} // namespace

HoldRun::HoldRun(HoldRequest request, SteadyTime begin)
    : request_(std::move(request)), limits_(request_.limits, begin) {
    state_.frontWaits = request_.readyDescriptor.has_value();
}

void HoldRun::act(Kind kind, std::string text) {
    actions_.push_back({.kind = kind, .text = std::move(text)});
}

void HoldRun::act(Kind kind, int number) {
    actions_.push_back({.kind = kind, .number = number});
}

HoldRun::Actions HoldRun::taken() {
    return std::exchange(actions_, {});
}

// The hold.

HoldRun::Actions HoldRun::started(const LimitWatch::Facts& facts) {
    if (request_.limits.until && !isSameDay(*request_.limits.until, facts.date))
        act(Kind::complain,
            "--until: the hold ends at " + timeOfDayText(*request_.limits.until, facts.date));
    if (request_.limits.onlyOnMains && facts.onMains == false) {
        noHoldAtAll("--ac-only: the Mac runs on its battery", ExitStatus::refused, facts.now);
    } else {
        act(Kind::awaitAnswer);
        act(Kind::askForHold);
    }
    return taken();
}

HoldRun::Actions HoldRun::statusChanged(const HoldKeeper::Status& status, SteadyTime now) {
    if (!isAskingForHold())
        return {};
    state_.keeper = status.state;
    state_.enabledIsTold = state_.enabledIsChecked = false;
    if (isAwake(status.state))
        held(status, now);
    else if (state_.firstAwake)
        notHeld(status, now);
    else if (status.state != HoldKeeper::State::connecting)
        noHoldAtAll(holdText(status),
                    status.state == HoldKeeper::State::refused ? ExitStatus::refused
                                                               : ExitStatus::unreachable,
                    now);
    return taken();
}

void HoldRun::held(const HoldKeeper::Status& status, SteadyTime now) {
    act(Kind::preventIdleSleep);
    act(Kind::say, holdText(status));
    if (!state_.awakeSince)
        state_.awakeSince = now;
    if (state_.firstAwake)
        return;
    state_.firstAwake = now;
    proceed();
}

/// Handles the loss of a hold, and every further status until the Mac is held awake again.
void HoldRun::notHeld(const HoldKeeper::Status& status, SteadyTime now) {
    const bool isLost = state_.awakeSince.has_value();
    stopAwake(now);
    act(Kind::allowIdleSleep);
    const bool asksAnew = status.state == HoldKeeper::State::connecting && status.reason.empty();
    if (asksAnew)
        return;
    if (request_.endsCommandOnLoss && runsCommand()) {
        act(Kind::complain, lossText(status) + "; ending " + request_.command.front());
        dropHold(now);
        act(Kind::signalCommand, SIGTERM);
        return;
    }
    const bool isOver = status.state == HoldKeeper::State::released;
    act(isLost ? Kind::complain : Kind::say,
        holdText(status)
            + (isOver && runsCommand() ? "; " + request_.command.front() + " runs on" : ""));
    if (!isOver)
        return;
    if (runsCommand())
        dropHold(now);
    else
        finish({.status = ExitStatus::success}, now);
}

/// Ends, or runs the command without a hold, if the first hold can't be had.
void HoldRun::noHoldAtAll(const std::string& why, int exitStatus, SteadyTime now) {
    if (!request_.runsAnyway) {
        act(Kind::complain, why);
        finish({.status = failure(exitStatus)}, now);
        return;
    }
    act(Kind::complain, why + "; running " + request_.command.front() + " without a hold");
    dropHold(now);
    proceed();
}

void HoldRun::limitReached(const std::string& why, SteadyTime now) {
    const std::string text = "the hold is over: " + why;
    if (!runsCommand()) {
        act(Kind::say, text);
        finish({.status = ExitStatus::success}, now);
        return;
    }
    act(Kind::say, text + "; " + request_.command.front() + " runs on");
    dropHold(now);
}

/// Gives up the hold while the command runs on.
void HoldRun::dropHold(SteadyTime now) {
    state_.wantsHold = false;
    giveUp(now);
}

void HoldRun::giveUp(SteadyTime now) {
    stopAwake(now);
    state_.isGivingUp = true;
    act(Kind::allowIdleSleep);
    act(Kind::giveUpHold);
}

void HoldRun::stopAwake(SteadyTime now) {
    state_.awakeBefore = awakeFor(now);
    state_.awakeSince.reset();
}

double HoldRun::awakeFor(SteadyTime now) const {
    return state_.awakeBefore + (state_.awakeSince ? now - *state_.awakeSince : 0);
}

HoldRun::Actions HoldRun::gaveUp(HoldKeeper::Outcome outcome, std::optional<bool> sleepDisabled) {
    state_.isGivingUp = false;
    if (state_.end) {
        tellOutcome(outcome, sleepDisabled);
        endNow();
        return taken();
    }
    if (state_.firstAwake && !isKnownToBeRestored(outcome, sleepDisabled))
        act(Kind::complain, "sleep may still be disabled");
    if (state_.stopsBy)
        act(Kind::stopSelf, *state_.stopsBy);
    return taken();
}

HoldRun::Actions HoldRun::answerIsLate() {
    const bool isWaiting = !state_.end && !state_.firstAwake && isAskingForHold()
                           && state_.keeper == HoldKeeper::State::connecting;
    if (isWaiting)
        // The process in front prints a process id and nothing else to standard output.
        act(state_.frontWaits && !request_.isQuiet ? Kind::complain : Kind::say,
            "waiting for the power daemon to answer");
    return taken();
}

// The process in front, which waits for the hold.

void HoldRun::proceed() {
    if (state_.frontWaits)
        act(Kind::tellFront);
    else
        startCommand();
}

HoldRun::Actions HoldRun::frontTold(bool isThere, SteadyTime now) {
    state_.frontWaits = false;
    if (isThere) {
        startCommand();
    } else {
        act(Kind::complain, "the process that waited for the hold is gone");
        finish({.status = failure(ExitStatus::refused)}, now);
    }
    return taken();
}

// The command.

void HoldRun::startCommand() {
    if (hasCommand())
        act(Kind::startCommand);
}

HoldRun::Actions HoldRun::commandStarted() {
    state_.command = State::Command::running;
    return {};
}

HoldRun::Actions HoldRun::commandNotStarted(const std::optional<std::string>& why, SteadyTime now) {
    act(Kind::complain,
        request_.command.front() + (why ? ": can't be run: " + *why : ": not found"));
    finish({.status = why ? ExitStatus::notExecutable : ExitStatus::notFound}, now);
    return taken();
}

HoldRun::Actions HoldRun::commandEnded(End end, SteadyTime now) {
    state_.command = State::Command::ended;
    finish(end, now);
    return taken();
}

HoldRun::Actions HoldRun::commandStopped(int signal, SteadyTime now) {
    stopBy(signal, now);
    return taken();
}

// Signals.

HoldRun::Actions HoldRun::signalled(Signal signal, SteadyTime now) {
    if (signal.number == SIGTSTP) {
        passOn(signal);
        stopBy(SIGTSTP, now);
    } else if (runsCommand()) {
        passOn(signal);
    } else if (!state_.end) {
        const bool isUsualEnd = state_.firstAwake && !hasCommand();
        finish(isUsualEnd ? End{.status = ExitStatus::success} : End{.signal = signal.number}, now);
    } else if (now - *state_.endsSince >= impatience) {
        // The lost connection ends the hold too.
        act(Kind::complain, "not waiting any longer; the power daemon enables sleep by itself");
        const bool isOfCommand = state_.command == State::Command::ended;
        const int ofCommand = state_.end->signal != 0 ? ExitStatus::bySignal + state_.end->signal
                                                      : state_.end->status;
        act(Kind::endAtOnce, isOfCommand ? ofCommand : failure(ExitStatus::refused));
    }
    return taken();
}

/// Passes a signal on to the command, which gets from the terminal what the terminal sends. Only a
/// hang-up must be passed on in any case: the kernel sends it to the session's leader alone, which
/// may be this process.
void HoldRun::passOn(Signal signal) {
    if (runsCommand() && (!signal.fromTerminal || signal.number == SIGHUP))
        act(Kind::signalCommand, signal.number);
}

/// Gives the hold up and then stops this process, as the signal does by default.
void HoldRun::stopBy(int signal, SteadyTime now) {
    if (state_.end || state_.stopsBy)
        return;
    state_.stopsBy = signal;
    if (state_.isGivingUp)
        return;
    if (!state_.wantsHold) {
        act(Kind::stopSelf, signal);
        return;
    }
    act(Kind::say, "stopped: the hold is given up meanwhile");
    giveUp(now);
}

HoldRun::Actions HoldRun::continued() {
    state_.stopsBy.reset();
    if (runsCommand())
        act(Kind::signalCommand, SIGCONT);
    if (state_.wantsHold) {
        state_.keeper = HoldKeeper::State::connecting;
        act(Kind::say, "going on: asking for the hold again");
        act(Kind::askForHold);
    }
    return taken();
}

// What is looked at every second.

HoldRun::Actions HoldRun::ticked(const Facts& facts) {
    if (state_.end)
        return {};
    if (state_.frontWaits && facts.frontIsGone)
        return frontTold(false, facts.limits.now);
    if (!state_.firstAwake || !isAskingForHold())
        return {};
    watchSetting(facts);
    watchLid(facts);
    if (const auto why = limits_.reached(facts.limits))
        limitReached(*why, facts.limits.now);
    return taken();
}

/// Looks for sleep that is enabled during the hold. The hold may have ended, so the daemon is asked
/// before people are told.
void HoldRun::watchSetting(const Facts& facts) {
    if (facts.sleepDisabled != false || !isAwake(state_.keeper)) {
        state_.enabledIsChecked = false;
        return;
    }
    if (!std::exchange(state_.enabledIsChecked, true)) {
        act(Kind::checkHold);
        return;
    }
    if (!facts.checkIsUnanswered && !std::exchange(state_.enabledIsTold, true))
        act(Kind::complain,
            "sleep is enabled although the hold is in force: somebody else has enabled it");
}

void HoldRun::watchLid(const Facts& facts) {
    if (!request_.displayOff || !facts.lidWouldSleep) {
        state_.lidShutSince.reset();
        state_.displayIsOff = false;
        return;
    }
    const SteadyTime now = facts.limits.now;
    if (!state_.lidShutSince)
        state_.lidShutSince = now;
    if (state_.displayIsOff || now - *state_.lidShutSince < displayOffDelay)
        return;
    state_.displayIsOff = true;
    act(Kind::turnDisplayOff);
}

// The end.

void HoldRun::finish(End end, SteadyTime now) {
    if (state_.end)
        return;
    state_.end = end;
    state_.endsSince = now;
    if (!state_.wantsHold && !state_.isGivingUp) {
        endNow();
        return;
    }
    act(Kind::awaitRelease);
    if (!state_.isGivingUp)
        giveUp(now);
}

HoldRun::Actions HoldRun::releaseIsLate() {
    act(Kind::say, "waiting for the power daemon to enable sleep again");
    return taken();
}

void HoldRun::tellOutcome(HoldKeeper::Outcome outcome, std::optional<bool> sleepDisabled) {
    if (!state_.firstAwake)
        return;
    if (outcome == HoldKeeper::Outcome::notHeld) {
        act(Kind::say, "ended; another client holds" + missedText());
        return;
    }
    if (isKnownToBeRestored(outcome, sleepDisabled)) {
        if (sleepDisabled == true)
            act(Kind::say, "sleep stays disabled, as it was before this hold" + missedText());
        else
            act(Kind::say,
                (state_.keeper == HoldKeeper::State::holding ? "released" : "ended; nobody holds")
                    + missedText());
        return;
    }
    act(Kind::complain, outcome == HoldKeeper::Outcome::pending
                            ? "the power daemon has not enabled sleep again yet; it keeps trying"
                            : "sleep may still be disabled: the power daemon did not answer");
    if (state_.end->status == ExitStatus::success && !hasCommand())
        state_.end->status = ExitStatus::refused;
}

/// Returns for how long the Mac was not held awake between the first hold and the end.
std::string HoldRun::missedText() const {
    const double missed = *state_.endsSince - *state_.firstAwake - state_.awakeBefore;
    return missed < 1 ? "" : "; it was not held for " + clockText(missed);
}

void HoldRun::endNow() {
    if (state_.end->signal != 0)
        act(Kind::endBySignal, state_.end->signal);
    else
        act(Kind::end, state_.end->status);
}

int HoldRun::failure(int exitStatus) const {
    return hasCommand() ? ExitStatus::withCommand : exitStatus;
}

} // namespace velmo
