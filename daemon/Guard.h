#pragma once

#include "core/power/BatteryFloor.h"
#include "core/power/HoldReasons.h"
#include "core/power/PowerGuardPolicy.h"
#include "core/support/Time.h"
#include "daemon/ClientConnection.h"
#include "daemon/RecordStore.h"
#include "daemon/SerialQueue.h"

#include "machine/PowerMachine.h"

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
/// Free (no holder, nothing to restore) -> held (record on disk) -> free, or -> pending when sleep
/// could not be enabled again: no holder, `heldPrevious` set, retried by every tick. The record is
/// on disk before the setting is touched, so that after a crash at any point the next start knows
/// what to undo.
///
/// All state lives on one serial queue; there are no locks. `tick` and `acceptConnection` may be
/// called from anywhere and only post; everything else runs on the queue.
class Guard : public std::enable_shared_from_this<Guard> {
public:
    /// Everything the guard reaches outside itself; must outlive it.
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
        int connections = 0;  ///< open client connections; counted, but no rule looks at it

        bool operator==(const State&) const = default;
    };

    using HoldResult = std::expected<void, HoldRefusal>;

    /// Without a requirement every client is refused.
    Guard(Services services, std::optional<std::string> requirement);

    /// Whether the connection was taken on. A refused one is to be dropped, not resumed.
    bool acceptConnection(const std::shared_ptr<ClientConnection>& connection);

    /// Due every 5 seconds.
    void tick();

    /// Start-up only: undoes what an earlier run has left behind.
    void recover();

    /// Takes the hold for the client, or renews it with another floor.
    HoldResult hold(ClientId who, BatteryFloor floor);

    /// Whether the client holds; if so its hold is good for another 35 s.
    bool heartbeat(ClientId who);

    /// Ends the hold, if there is one, and restores the setting. True when nothing is left to
    /// restore; false: the next tick tries again.
    bool revert(RevertReason reason);

    [[nodiscard]] SerialQueue& queue() const { return services_.queue; }

    [[nodiscard]] const State& state() const { return state_; }

private:
    HoldResult beginHold();
    [[nodiscard]] std::optional<PowerGuardPolicy::Revert> reasonToRevert(BatteryFloor floor,
                                                                         SteadyTime lastBeat);
    bool disableSleep();
    bool enableSleep();
    std::optional<bool> recordedPrevious();
    void checkHolder();
    void checkFree();
    void connectionLost(ClientId who);

    Services services_;
    const std::optional<std::string> requirement_;
    State state_;
};

} // namespace velmo
