#pragma once

#include "core/power/VelmoPowerProtocol.h"

#include "client/PowerLink.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace velmo {

/// Keeps a hold for as long as its user wants: takes it, sends heartbeats, says so at once when it
/// is lost, and takes it again. All calls, replies and timers are on one thread, and nothing is
/// called back once the keeper is gone: link and timer must see to that.
///
///     HoldKeeper keeper(link, timer, [](const HoldKeeper::Status& status) { … }, 20);
///     keeper.start();
///     …
///     keeper.stop([](bool restored) { … });
class HoldKeeper {
public:
    enum class State {
        connecting, ///< a hold was asked for and not answered yet
        holding,
        refused,     ///< the daemon said no; `reason` says why, and it is asked again
        unreachable, ///< there is no daemon to ask; it is looked for again
    };

    struct Status {
        State state = State::connecting;
        /// The daemon's own word where it refused (the text of a `HoldRefusal`), or, while
        /// connecting, why a hold is taken once more.
        std::string reason;

        bool operator==(const Status&) const = default;
    };

    /// Calls back once, after so many seconds.
    using Timer = std::function<void(double seconds, std::function<void()>)>;

    static constexpr double heartbeatInterval = 10.0; ///< seconds; the daemon waits for 35
    static constexpr double refusedRetry = 5.0;       ///< seconds
    static constexpr double unreachableRetry = 1.0;   ///< seconds

    /// `report` hears of every change of status; `batteryFloor` is in percent.
    HoldKeeper(PowerLink& link, Timer timer, std::function<void(const Status&)> report,
               std::int64_t batteryFloor);

    /// Asks for the hold, and from then on for as long as it takes.
    void start();

    /// Gives the hold up. `done` hears whether the sleep setting is restored, also when there was
    /// nothing to give up.
    void stop(std::function<void(bool restored)> done);

    [[nodiscard]] const Status& status() const { return status_; }

private:
    struct Attempt {};

    void takeHold();
    void takeHoldAgain(std::string_view why);
    void connectionLost();
    void releaseAnswered(bool restored);
    void holdAnswered(bool ok, std::string_view reason);
    void scheduleHeartbeat();
    void beat();
    void retryAfter(double seconds);
    void change(State state, std::string_view reason = {});

    /// Wraps a callback so that it is dropped when the attempt it belongs to is over, or the
    /// keeper gone.
    template<class Callback>
    auto current(Callback callback);

    PowerLink& link_;
    Timer timer_;
    std::function<void(const Status&)> report_;
    std::int64_t batteryFloor_;
    Status status_;
    std::shared_ptr<VelmoPowerProtocol> daemon_;
    std::shared_ptr<Attempt> attempt_; ///< replaced to end it; its end ends its callbacks too
    bool stopping_ = false;
    std::function<void(bool)> stopped_; ///< while a release is on its way
};

} // namespace velmo
