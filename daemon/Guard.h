#pragma once

#include "core/power/BatteryFloor.h"
#include "core/power/HoldReasons.h"
#include "core/power/PowerGuardPolicy.h"
#include "core/support/Time.h"
#include "daemon/ClientConnection.h"
#include "daemon/HoldLedger.h"
#include "daemon/RecordStore.h"
#include "daemon/SerialQueue.h"
#include "machine/PowerMachine.h"

#include <atomic>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Owns the system-wide disable-sleep setting on behalf of one client at a time, and puts it back
/// when the hold ends for whatever reason.
///
/// The guard is free (without a holder and a setting to restore), held (the record is on disk), or
/// pending: the hold has ended, sleep could not be enabled again, `heldPrevious` is set, and every
/// tick tries once more. The record is on disk before the setting is touched, so that after a crash
/// at any point the next start knows what to undo.
///
/// All state lives on one serial queue, without locks. `tick`, `stop` and `acceptConnection`
/// may be called from anywhere. Everything else runs on the queue.
class Guard : public std::enable_shared_from_this<Guard> {
public:
    /// Everything the guard reaches outside itself; it must outlive the guard.
    struct Services {
        PowerMachine& machine;
        RecordStore& records;
        SerialQueue& queue;
        std::function<void(std::string_view message)> log;
        std::function<void(int status)> exitProcess;
    };

    struct State {
        std::optional<ClientId> holder;
        /// The setting in force before the daemon changed it; absent: nothing to restore.
        std::optional<bool> heldPrevious;
        BatteryFloor floor;   ///< the holder's
        SteadyTime lastBeat;  ///< the holder's last hold or heartbeat
        SteadyTime idleSince; ///< when the guard last became free
        /// When the Mac was allowed to sleep again; absent once it has looked at its lid, or need
        /// not.
        std::optional<SteadyTime> sleepOwedSince;
        bool enablingIsLogged =
            false;           ///< the log has a line that sleep was enabled during this hold
        int connections = 0; ///< open client connections; counted, but no rule looks at it

        bool operator==(const State&) const = default;
    };

    using HoldResult = std::expected<void, HoldRefusal>;

    // pmset ends before the setting has changed, so the guard looks at the setting again and again.
    static constexpr double maxLateness = 2.0;    ///< seconds until the setting counts as unchanged
    static constexpr double latenessStep = 0.02;  ///< seconds between two looks at the property
    static constexpr double preferenceStep = 0.5; ///< seconds between two looks that run pmset

    /// How long after a hold the Mac is asked to look at its lid, in seconds: a client that takes
    /// over from another must find it awake.
    static constexpr double lidDelay = 30.0;

    /// Without a requirement every client is refused.
    Guard(Services services, std::optional<std::string> requirement);

    /// Makes the object that answers the calls of one connection; it keeps neither alive.
    using MakeSession = std::shared_ptr<VelmoPowerProtocol>(std::weak_ptr<Guard>,
                                                            std::weak_ptr<ClientConnection>);

    /// Admits the connection and resumes it with a session of its own. Returns false for a refused
    /// connection, which the caller drops without resuming it.
    bool acceptConnection(const std::shared_ptr<ClientConnection>& connection,
                          MakeSession& makeSession);

    /// Posts a look at the hold, or at what is left to do without one. Due every 5 seconds; does
    /// nothing while an earlier tick still waits for its turn or runs.
    void tick();

    /// Ends the daemon: restores the setting and then exits, both on the queue, so that nothing
    /// that was queued behind takes effect. Holds that are queued in front are refused from now on.
    /// Does not return before the process is to end.
    void stop();

    /// Undoes what an earlier run has left behind. Called once, at the start.
    void recover();

    /// Takes the hold for the client, or renews it with another floor.
    HoldResult hold(ClientId who, BatteryFloor floor);

    /// Returns whether the client holds; if so its hold is good for another
    /// `PowerGuardPolicy::heartbeatTimeout`.
    bool heartbeat(ClientId who);

    /// Ends the hold in force, which may be another client's. An absent client, which has gone
    /// since its call, counts as another than the holder. Returns the same as `revert`.
    bool release(std::optional<ClientId> who);

    /// Returns the report about the holds for the client. Reads the setting and the records, and
    /// runs no program.
    HoldReport report(ClientId who);

    /// Ends the hold, if there is one, and restores the setting. Returns true when nothing is left
    /// to restore; after false the next tick tries again.
    bool revert(RevertReason reason);

    [[nodiscard]] SerialQueue& queue() const { return services_.queue; }

    [[nodiscard]] const State& state() const { return state_; }

private:
    PowerGuardPolicy::Facts readFacts(BatteryFloor floor);
    HoldResult beginHold();
    HoldResult takeOverRestore();
    void logDisabledSleep() const;
    bool disableSleep();
    bool writeSetting(bool sleepDisabled);
    bool enableSleep();
    void undoDisableSleep();
    bool becomes(bool sleepDisabled);
    std::optional<bool> recordedPrevious();
    std::optional<bool> previousToRestore();
    void checkHolder();
    void checkFree();
    void checkLid();
    void connectionLost(ClientId who);
    bool restore(RevertReason reason);
    void noticeEnabledSleep();
    void recallLastEnd(const std::optional<PowerDaemonRecord>& left);
    void saveLastEndLater();
    void saveLastEnd();

    Services services_;
    const std::optional<std::string> requirement_;
    State state_;
    HoldLedger ledger_;
    std::optional<HoldEnd>
        savedEnd_; ///< the end that was last read, or written with or without success
    std::atomic<bool> tickIsOutstanding_ = false;
    std::atomic<bool> isStopping_ = false;
};

} // namespace velmo
