#pragma once

#include "core/support/Time.h"
#include "phone/PhoneCalls.h"
#include "phone/PhonePower.h"
#include "phone/SessionLink.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// The switch by which a page keeps the computer awake as long as a session runs. All pages share
/// one switch. Once no session runs, or no session host answers, the switch turns itself off.
class AwakeSwitch {
public:
    static constexpr std::int64_t floor = 20;  ///< percent of the battery
    static constexpr double lookInterval = 10; ///< seconds between two looks at the sessions

    // What turns the switch off, besides the endings and refusals of the power daemon.
    static constexpr std::string_view byPerson = "switched off";
    static constexpr std::string_view noSession = "no session";

    struct Services {
        SessionLink& sessions;
        PhonePower& power;
        std::function<WallTime()> wallTime;
        /// Calls back once, after so many seconds.
        std::function<void(double seconds, std::function<void()>)> after;
        std::function<void()> changed; ///< called when `describe` would tell something new
    };

    explicit AwakeSwitch(Services services);
    ~AwakeSwitch();
    AwakeSwitch(const AwakeSwitch&) = delete;
    AwakeSwitch& operator=(const AwakeSwitch&) = delete;

    void turn(bool on);

    /// Reads the power and tells it, with the switch and what last turned it off.
    void describe(std::function<void(const PhonePowerLine& power)> done);

private:
    struct Turn {};

    void look();
    void looked(const std::optional<SessionReplyLine>& reply);
    void holdChanged(const HoldKeeper::Status& status);
    void turnOff(std::string_view why);
    [[nodiscard]] PhonePowerLine lineOf(const PhonePower::Reading& reading) const;

    /// Wraps a callback, so that it does nothing once the switch has been turned or is gone.
    template<class Callback>
    auto ifStillOn(Callback callback);

    Services services_;
    std::shared_ptr<Turn> turn_; ///< null while the switch is off
    std::shared_ptr<Turn> life_ = std::make_shared<Turn>();
    HoldKeeper::State state_ = HoldKeeper::State::connecting;
    std::string why_;                 ///< of the last end of the hold, or of its refusal
    std::optional<WallTime> whyAt_{}; ///< when that was
};

} // namespace velmo
