#pragma once

#include "core/power/BatteryFloor.h"
#include "core/power/HoldReport.h"
#include "core/power/VelmoPowerProtocol.h"

#include "client/PowerLink.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Keeps a hold for as long as its user wants: takes it, sends heartbeats, says at once when it is
/// lost and why, and takes it again. While another client holds, the Mac is awake all the same: the
/// keeper rides on that hold and takes over when it ends. A `release` by another client is meant
/// for everybody who holds or rides: the keeper then asks no more, unless it was told to persist.
///
/// All calls, replies and timers are on one thread, and nothing is called back once the keeper is
/// gone: link and timer must see to that. No call waits for the daemon.
///
///     const auto report = [](const HoldKeeper::Status& status) { … };
///     HoldKeeper keeper(link, timer, report, {.batteryFloor = 20});
///     keeper.start();
///     …
///     keeper.stop([](HoldKeeper::Outcome outcome) { … });
class HoldKeeper {
public:
    enum class State {
        connecting, ///< a hold was asked for and not answered yet; `reason` says how one ended
        holding,
        riding,      ///< another client holds; it is looked at again
        refused,     ///< the daemon said no; `reason` says why, and it is asked again
        unreachable, ///< there is no daemon to ask, or it is silent; it is looked for again
        released,    ///< another client has released the hold; it is not asked for any more
    };

    struct Status {
        State state = State::connecting;
        /// While refused, the text of a `HoldRefusal`. While connecting anew, and once released,
        /// how the hold ended: the text of a `HoldEnding`, or one of the two below. A newer daemon
        /// may have other texts. Otherwise empty, or `daemonSilent`.
        std::string reason{};
        /// Whose hold it rides on; absent if the daemon's report can't be decoded.
        std::optional<HolderReport> holder{};
    };

    static constexpr std::string_view connectionLost = "connection"; ///< the daemon went away
    static constexpr std::string_view reasonUnknown = "unknown";     ///< it ended the hold untold
    static constexpr std::string_view daemonSilent = "silent";       ///< it does not answer

    struct Options {
        BatteryFloor batteryFloor{};
        bool persist = false; ///< takes the hold again after another client has released it
        bool rides = true;    ///< else "busy" is a refusal like the others
    };

    /// What is known of the sleep setting when a keeper has stopped.
    enum class Outcome {
        restored,
        notHeld, ///< nothing of ours is in force: somebody else holds
        pending, ///< sleep could not be enabled again yet; the daemon keeps trying
        unknown, ///< the daemon did not answer
    };

    /// Calls back once, after so many seconds.
    using Timer = std::function<void(double seconds, std::function<void()>)>;

    static constexpr double heartbeatInterval = 10.0; ///< seconds; the daemon waits for 35
    static constexpr double ridingInterval = 2.0;     ///< seconds between looks at another's hold
    static constexpr double refusedRetry = 5.0;       ///< seconds
    static constexpr double unreachableRetry = 1.0;   ///< seconds
    static constexpr double patience = 30.0; ///< seconds for an answer, with a pmset of 10 in it

    /// `report` hears of every change of status.
    HoldKeeper(PowerLink& link, Timer timer, std::function<void(const Status&)> report,
               Options options);

    /// Asks for the hold, and from then on for as long as it takes. Again after a stop, too.
    void start();

    /// Gives the hold up, if it still is this keeper's. `done` is called within twice the patience,
    /// also when there was nothing to give up.
    void stop(std::function<void(Outcome)> done);

    /// Asks the daemon at once whether the hold is in force, for whoever has reason to doubt it.
    void checkNow();

    [[nodiscard]] const Status& status() const { return status_; }

    /// Returns whether a call is not answered yet.
    [[nodiscard]] bool isWaiting() const { return awaited_.has_value(); }

private:
    struct Attempt {};

    void takeHold();
    void connectionEnded();
    void holdAnswered(bool ok, std::string_view reason);
    void look();
    void lookAnswered(const std::optional<HoldReport>& report);
    void scheduleHeartbeat();
    void beat();
    void askWhyLost();
    void holdLost(std::string_view how);
    [[nodiscard]] bool endsForGood(std::string_view how) const;
    void lookForDaemonAgain(std::string_view why = {});
    void retryAfter(double seconds);
    void giveUpWaiting();

    void releaseIfStillHeld();
    void askForOutcome();
    void stopped(Outcome outcome);

    /// Comes last in whatever it ends: the report may stop this keeper.
    void change(Status next);
    void newAttempt();

    /// Wraps a callback so that it is dropped when the attempt it belongs to is over, or the
    /// keeper gone.
    template<class Callback>
    auto current(Callback callback);

    /// Does the same for a reply, which is not waited for longer than `patience`.
    template<class Callback>
    auto reply(Callback callback);

    /// Asks the daemon about the holds. The callback gets nothing where the answer is no report.
    template<class Callback>
    void askForReport(Callback callback);

    PowerLink& link_;
    Timer timer_;
    std::function<void(const Status&)> report_;
    Options options_;
    Status status_;
    std::shared_ptr<VelmoPowerProtocol> daemon_;
    bool connectionAnswers_ = false; ///< this connection has had a reply
    std::optional<int> awaited_;     ///< the number of the call without a reply yet
    int calls_ = 0;
    std::shared_ptr<Attempt> attempt_;  ///< replaced to end it; its end ends its callbacks too
    std::function<void(Outcome)> done_; ///< while stopping
};

} // namespace velmo
