#include "client/HoldKeeper.h"

#include <utility>

namespace velmo {

HoldKeeper::HoldKeeper(PowerLink& link, Timer timer, std::function<void(const Status&)> report,
                       std::int64_t batteryFloor)
    : link_(link),
      timer_(std::move(timer)),
      report_(std::move(report)),
      batteryFloor_(batteryFloor) {
}

template<class Callback>
auto HoldKeeper::current(Callback callback) {
    return [attempt = std::weak_ptr(attempt_), callback](auto... arguments) {
        if (!attempt.expired())
            callback(arguments...);
    };
}

void HoldKeeper::start() {
    takeHold();
}

void HoldKeeper::takeHold() {
    attempt_ = std::make_shared<Attempt>();
    if (!daemon_)
        daemon_ = link_.connect([this] { connectionLost(); });
    if (!daemon_) {
        change(State::unreachable);
        retryAfter(unreachableRetry);
        return;
    }
    daemon_->hold(batteryFloor_,
                  current([this](bool ok, std::string_view reason) { holdAnswered(ok, reason); }));
}

void HoldKeeper::connectionLost() {
    daemon_.reset();
    if (stopping_)
        releaseAnswered(false);
    else
        takeHoldAgain("the power daemon went away");
}

void HoldKeeper::takeHoldAgain(std::string_view why) {
    change(State::connecting, why);
    takeHold();
}

void HoldKeeper::holdAnswered(bool ok, std::string_view reason) {
    if (!ok) {
        change(State::refused, reason);
        retryAfter(refusedRetry);
        return;
    }
    change(State::holding);
    scheduleHeartbeat();
}

void HoldKeeper::scheduleHeartbeat() {
    timer_(heartbeatInterval, current([this] { beat(); }));
}

void HoldKeeper::beat() {
    daemon_->heartbeat(current([this](bool ok) {
        if (ok)
            scheduleHeartbeat();
        else
            takeHoldAgain("the power daemon ended the hold");
    }));
}

void HoldKeeper::retryAfter(double seconds) {
    timer_(seconds, current([this] { takeHold(); }));
}

void HoldKeeper::stop(std::function<void(bool restored)> done) {
    stopping_ = true;
    attempt_.reset();
    // Releasing ends whoever's hold there is. So it is for a hold that is known to be ours; one
    // that was only asked for ends with the connection.
    if (!daemon_ || status_.state != State::holding) {
        daemon_.reset();
        done(true);
        return;
    }
    stopped_ = std::move(done);
    daemon_->release([this](bool restored) { releaseAnswered(restored); });
}

void HoldKeeper::releaseAnswered(bool restored) {
    if (const auto done = std::exchange(stopped_, nullptr))
        done(restored);
}

void HoldKeeper::change(State state, std::string_view reason) {
    Status next{.state = state, .reason = std::string(reason)};
    if (next == status_)
        return;
    status_ = std::move(next);
    report_(status_);
}

} // namespace velmo
