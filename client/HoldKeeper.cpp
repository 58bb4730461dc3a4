#include "client/HoldKeeper.h"

#include "core/power/HoldReasons.h"

#include <utility>

namespace velmo {

HoldKeeper::HoldKeeper(PowerLink& link, Timer timer, std::function<void(const Status&)> report,
                       Options options)
    : link_(link), timer_(std::move(timer)), report_(std::move(report)), options_(options) {
}

template<class Callback>
auto HoldKeeper::current(Callback callback) {
    return [attempt = std::weak_ptr(attempt_), callback](const auto&... arguments) {
        if (!attempt.expired())
            callback(arguments...);
    };
}

template<class Callback>
auto HoldKeeper::reply(Callback callback) {
    awaited_ = ++calls_;
    timer_(patience, current([this, call = calls_] {
               if (awaited_ == call)
                   giveUpWaiting();
           }));
    return current([this, callback](const auto&... arguments) {
        awaited_.reset();
        connectionAnswers_ = true;
        callback(arguments...);
    });
}

template<class Callback>
void HoldKeeper::askForReport(Callback callback) {
    daemon_->report(reply(callback));
}

void HoldKeeper::newAttempt() {
    attempt_ = std::make_shared<Attempt>();
    awaited_.reset();
}

void HoldKeeper::start() {
    newAttempt();
    const auto attempt = attempt_;
    change({.state = State::connecting});
    if (attempt == attempt_)
        takeHold();
}

void HoldKeeper::takeHold() {
    newAttempt();
    if (!daemon_) {
        connectionAnswers_ = false;
        daemon_ = link_.connect([this](PowerLink::Loss loss) { connectionEnded(loss); });
    }
    if (!daemon_) {
        lookForDaemonAgain();
        return;
    }
    daemon_->hold(options_.batteryFloor.percent(),
                  reply([this](bool ok, std::string_view reason) { holdAnswered(ok, reason); }));
}

void HoldKeeper::connectionEnded(PowerLink::Loss loss) {
    daemon_.reset();
    if (done_) {
        stopped(Outcome::unknown);
        return;
    }
    if (connectionAnswers_)
        holdLost(connectionLost);
    else
        lookForDaemonAgain(loss == PowerLink::Loss::tooManyClients ? daemonFull : "");
}

void HoldKeeper::giveUpWaiting() {
    daemon_.reset();
    if (done_) {
        stopped(Outcome::unknown);
        return;
    }
    lookForDaemonAgain(daemonSilent);
}

void HoldKeeper::lookForDaemonAgain(std::string_view why) {
    newAttempt();
    retryAfter(unreachableRetry);
    change({.state = State::unreachable, .reason = std::string(why)});
}

void HoldKeeper::holdAnswered(bool ok, std::string_view reason) {
    if (ok) {
        scheduleHeartbeat();
        change({.state = State::holding});
    } else if (options_.rides && reason == rawText(HoldRefusal::busy)) {
        look();
    } else {
        retryAfter(refusedRetry);
        change({.state = State::refused, .reason = std::string(reason)});
    }
}

/// Looks at the hold of another client.
void HoldKeeper::look() {
    askForReport([this](const std::optional<HoldReport>& report) { lookAnswered(report); });
}

void HoldKeeper::lookAnswered(const std::optional<HoldReport>& report) {
    if (report && !report->holder) {
        const auto& last = report->lastEnd;
        if (last && endsForGood(last->how))
            change({.state = State::released, .reason = last->how});
        else
            takeHold();
        return;
    }
    timer_(ridingInterval, current([this] { look(); }));
    change({.state = State::riding, .holder = report ? report->holder : std::nullopt});
}

void HoldKeeper::scheduleHeartbeat() {
    timer_(heartbeatInterval, current([this] { beat(); }));
}

void HoldKeeper::beat() {
    daemon_->heartbeat(reply([this](bool ok) {
        if (ok)
            scheduleHeartbeat();
        else
            askWhyLost();
    }));
}

void HoldKeeper::checkNow() {
    const bool holds = status_.state == State::holding;
    if (!daemon_ || done_ || awaited_ || (!holds && status_.state != State::riding))
        return;
    newAttempt(); // drops the heartbeat or look that is due later
    if (holds)
        beat();
    else
        look();
}

void HoldKeeper::askWhyLost() {
    askForReport([this](const std::optional<HoldReport>& report) {
        holdLost(report && report->ownEnd ? std::string_view(report->ownEnd->how) : reasonUnknown);
    });
}

/// A release by another client is meant for the holder and for every client that rides.
bool HoldKeeper::endsForGood(std::string_view how) const {
    return how == rawText(HoldEnding::releasedByAnother) && !options_.persist;
}

void HoldKeeper::holdLost(std::string_view how) {
    if (endsForGood(how)) {
        change({.state = State::released, .reason = std::string(how)});
        return;
    }
    // The report may stop this keeper.
    const auto attempt = attempt_;
    change({.state = State::connecting, .reason = std::string(how)});
    if (attempt == attempt_)
        takeHold();
}

void HoldKeeper::retryAfter(double seconds) {
    timer_(seconds, current([this] { takeHold(); }));
}

void HoldKeeper::stop(std::function<void(Outcome)> done) {
    newAttempt();
    done_ = std::move(done);
    if (!daemon_) {
        stopped(Outcome::unknown);
        return;
    }
    switch (status_.state) {
    // A keeper that rides or is refused may have asked for the next hold already.
    case State::holding:
    case State::riding:
    case State::refused:
    case State::released:
        releaseIfStillHeld();
        return;
    case State::connecting:
    case State::unreachable:
        break;
    }
    // A hold that was only asked for ends with its connection.
    daemon_.reset();
    stopped(Outcome::unknown);
}

/// Asks first whether the hold is still this keeper's: a release ends any hold, so that it would
/// also end another client's if ours has ended meanwhile.
void HoldKeeper::releaseIfStillHeld() {
    daemon_->heartbeat(reply([this](bool holds) {
        if (!holds) {
            askForOutcome();
            return;
        }
        daemon_->release(reply(
            [this](bool restored) { stopped(restored ? Outcome::restored : Outcome::pending); }));
    }));
}

void HoldKeeper::askForOutcome() {
    askForReport([this](const std::optional<HoldReport>& report) {
        if (!report)
            stopped(Outcome::unknown);
        else if (report->holder)
            stopped(Outcome::notHeld);
        else
            stopped(report->pending || report->recordIsUnreadable ? Outcome::pending
                                                                  : Outcome::restored);
    });
}

void HoldKeeper::stopped(Outcome outcome) {
    newAttempt();
    daemon_.reset();
    if (const auto done = std::exchange(done_, nullptr))
        done(outcome);
}

namespace {

/// Tells whether both are the same hold; the age of the last heartbeat does not count.
bool isSameHolder(const std::optional<HolderReport>& a, const std::optional<HolderReport>& b) {
    if (!a || !b)
        return a.has_value() == b.has_value();
    return a->processId == b->processId && a->since == b->since;
}

} // namespace

void HoldKeeper::change(Status next) {
    if (next.state == status_.state && next.reason == status_.reason
        && isSameHolder(next.holder, status_.holder))
        return;
    status_ = std::move(next);
    report_(status_);
}

} // namespace velmo
