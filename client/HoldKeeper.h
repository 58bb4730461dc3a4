#pragma once

#include "client/PowerLink.h"
#include "core/power/BatteryFloor.h"
#include "core/power/HoldReport.h"
#include "core/power/VelmoPowerProtocol.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Keeps a hold for as long as its user wants: takes the hold, sends heartbeats, reports at once
/// when the hold is lost and why, and takes it again. While another client has the hold, the Mac is
/// awake all the same: the keeper rides on that hold and takes over when it ends. A `release` by
/// another client is meant for the holder and for every client that rides: the keeper then asks no
/// more, unless it was told to persist.
///
/// The link and the timer must call back on the thread that calls the keeper. Replies and timers
/// that come once the keeper is gone do nothing. No call waits for the daemon.
///
///     const auto report = [](const HoldKeeper::Status& status) { … };
///     HoldKeeper keeper(link, timer, report, {.batteryFloor = 20});
///     keeper.start();
///     …
///     keeper.stop([](HoldKeeper::Outcome outcome) { … });
class HoldKeeper {
public:
    enum class State {
        connecting, ///< asks for the hold; `reason` says how an earlier hold ended
        holding,
        riding,      ///< another client has the hold; the keeper looks at it again
        refused,     ///< the daemon refused; `reason` says why, and the keeper asks again
        unreachable, ///< the daemon can't be reached or is silent; the keeper tries again
        released,    ///< another client has released the hold; the keeper asks no more
    };

    struct Status {
        State state = State::connecting;
        /// While refused: the text of a `HoldRefusal`. While connecting anew, and once released:
        /// how the hold ended, which is the text of a `HoldEnding`, `connectionLost` or
        /// `reasonUnknown`. A newer daemon may send other texts. While unreachable: `daemonSilent`,
        /// `daemonFull` or empty. Otherwise empty.
        std::string reason{};
        /// While riding: the holder; absent if the daemon's report can't be decoded.
        std::optional<HolderReport> holder{};
    };

    static constexpr std::string_view connectionLost = "connection"; ///< the daemon went away
    static constexpr std::string_view reasonUnknown = "unknown";     ///< the daemon gave no reason
    static constexpr std::string_view daemonSilent = "silent";       ///< the daemon does not answer
    static constexpr std::string_view daemonFull = "full"; ///< the daemon has too many clients

    struct Options {
        BatteryFloor batteryFloor{};
        bool persist = false; ///< takes the hold again after another client has released it
        bool rides = true;    ///< if false, "busy" is a refusal like the others
    };

    /// What is known of the sleep setting when a keeper has stopped.
    enum class Outcome {
        restored,
        notHeld, ///< another client has the hold
        pending, ///< sleep could not be enabled again yet; the daemon keeps trying
        unknown, ///< the daemon was not asked, or sent no usable answer
    };

    /// Calls back once, after so many seconds.
    using Timer = std::function<void(double seconds, std::function<void()>)>;

    static constexpr double heartbeatInterval = 10.0; ///< seconds; the daemon waits for 35
    static constexpr double ridingInterval = 2.0;     ///< seconds between looks at another hold
    static constexpr double refusedRetry = 5.0;       ///< seconds
    static constexpr double unreachableRetry = 1.0;   ///< seconds
    static constexpr double patience = 30.0; ///< seconds for a reply; its pmset may take 10

    /// `report` is called at every change of status.
    HoldKeeper(PowerLink& link, Timer timer, std::function<void(const Status&)> report,
               Options options);

    /// Asks for the hold, again and again for as long as it takes. May be called again after a
    /// stop.
    void start();

    /// Gives up the hold, if the keeper still has it. `done` is called within twice the patience,
    /// with or without a hold.
    void stop(std::function<void(Outcome)> done);

    /// Asks the daemon at once whether the hold is in force, for a caller with reason to doubt it.
    /// Does nothing if the keeper neither holds nor rides, or if a reply is due already.
    void checkNow();

    [[nodiscard]] const Status& status() const { return status_; }

    /// Returns whether a call is not answered yet.
    [[nodiscard]] bool isWaiting() const { return awaited_.has_value(); }

private:
    struct Attempt {};

    void takeHold();
    void connectionEnded(PowerLink::Loss loss);
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

    /// Called last, or followed by a check of the attempt: the report may stop this keeper.
    void change(Status next);
    void newAttempt();

    /// Wraps a callback, so that it does nothing once the current attempt is over or the keeper is
    /// gone.
    template<class Callback>
    auto current(Callback callback);

    /// Does the same for a reply, and gives up the connection if the reply takes longer than
    /// `patience`.
    template<class Callback>
    auto reply(Callback callback);

    /// Asks the daemon about the holds. The callback gets nothing if the reply can't be decoded.
    template<class Callback>
    void askForReport(Callback callback);

    PowerLink& link_;
    Timer timer_;
    std::function<void(const Status&)> report_;
    Options options_;
    Status status_;
    std::shared_ptr<VelmoPowerProtocol> daemon_;
    bool connectionAnswers_ = false; ///< this connection has had a reply
    std::optional<int> awaited_;     ///< the number of the call that waits for its reply
    int calls_ = 0;
    std::shared_ptr<Attempt> attempt_;  ///< replaced to end the attempt and its callbacks
    std::function<void(Outcome)> done_; ///< set while stopping
};

} // namespace velmo
