#include "phone/AwakeSwitch.h"

#include <algorithm>
#include <utility>

namespace velmo {

template<class Callback>
auto AwakeSwitch::ifStillOn(Callback callback) {
    return [turn = std::weak_ptr(turn_), callback = std::move(callback)](const auto&... results) {
        if (!turn.expired())
            callback(results...);
    };
}

AwakeSwitch::AwakeSwitch(Services services) : services_(std::move(services)) {
}

AwakeSwitch::~AwakeSwitch() {
    if (turn_)
        services_.power.release();
}

void AwakeSwitch::turn(bool on) {
    if (on == (turn_ != nullptr))
        return;
    if (!on)
        return turnOff(byPerson);
    turn_ = std::make_shared<Turn>();
    state_ = HoldKeeper::State::connecting;
    why_.clear();
    whyAt_.reset();
    services_.power.keep(BatteryFloor(floor), ifStillOn([this](const HoldKeeper::Status& status) {
                             holdChanged(status);
                         }));
    look();
}

void AwakeSwitch::describe(std::function<void(const PhonePowerLine& power)> done) {
    services_.power.read([this, life = std::weak_ptr(life_),
                          done = std::move(done)](const PhonePower::Reading& reading) {
        if (!life.expired())
            done(lineOf(reading));
    });
}

void AwakeSwitch::look() {
    services_.sessions.call(
        {.call = SessionCall::list},
        ifStillOn([this](const std::optional<SessionReplyLine>& reply) { looked(reply); }));
}

void AwakeSwitch::looked(const std::optional<SessionReplyLine>& reply) {
    const bool runs = reply && reply->sessions
                      && std::ranges::any_of(*reply->sessions, [](const SessionEntry& session) {
                             return !session.exitCode;
                         });
    if (!runs)
        return turnOff(noSession);
    services_.after(lookInterval, ifStillOn([this] { look(); }));
}

void AwakeSwitch::holdChanged(const HoldKeeper::Status& status) {
    state_ = status.state;
    if (!status.reason.empty()) {
        why_ = status.reason;
        whyAt_ = services_.wallTime();
    }
    // Another client has released the hold, and meant it for all: the keeper asks no more.
    if (status.state == HoldKeeper::State::released)
        return turnOff(status.reason);
    services_.changed();
}

void AwakeSwitch::turnOff(std::string_view why) {
    turn_.reset();
    why_ = why;
    whyAt_ = services_.wallTime();
    services_.power.release();
    services_.changed();
}

PhonePowerLine AwakeSwitch::lineOf(const PhonePower::Reading& reading) const {
    PhonePowerLine line{.battery = reading.battery,
                        .mains = reading.mains,
                        .hasDaemon = reading.report.has_value(),
                        .keeps = turn_ != nullptr};
    if (turn_)
        line.isAwake = state_ == HoldKeeper::State::holding;
    if (reading.report && reading.report->holder) {
        line.isAwake = true;
        line.holder = reading.report->holder->program;
    }
    if (whyAt_) {
        line.why = why_;
        line.whyAt = whyAt_->sinceEpoch;
    }
    return line;
}

} // namespace velmo
