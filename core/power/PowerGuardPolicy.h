#pragma once

#include "core/power/BatteryFloor.h"
#include "core/power/HoldReasons.h"
#include "core/power/ThermalState.h"
#include "core/support/RawText.h"
#include "core/support/Time.h"

#include <array>
#include <cstdint>
#include <optional>

/// When a hold must be given up. The power daemon asks on every hold and on every tick.
namespace velmo::PowerGuardPolicy {

inline constexpr std::int64_t minimumBattery = BatteryFloor::min; ///< percent
inline constexpr double heartbeatTimeout = 35.0;                  ///< seconds
inline constexpr double idleExit = 60.0; ///< seconds without a hold until the daemon ends
inline constexpr ThermalState maxThermal = ThermalState::fair;

enum class Revert { heartbeat, battery, thermal };

/// Returns the floor within 10 to 95.
constexpr std::int64_t clampFloor(std::int64_t floor) {
    return BatteryFloor(floor).percent();
}

struct Facts {
    std::optional<bool> onAC;   ///< absent when no power source is reported; counts as mains
    std::optional<int> battery; ///< percent; absent never ends a hold
    BatteryFloor floor;
    ThermalState thermalRaw = ThermalState::nominal;
    SteadyTime lastBeat; ///< the holder's last hold or heartbeat
    SteadyTime now;
};

/// Returns the reason to give the hold up, if there is one. A stale heartbeat outranks heat, and
/// heat outranks the battery. Exactly 35 s without a heartbeat is still in time.
std::optional<Revert> check(const Facts& facts);

/// Returns the guard's reason for the same.
RevertReason revertReason(Revert reason);

/// What makes it dangerous to keep the machine awake.
enum class Danger { battery, thermal };

/// Returns the reason to refuse a hold, if there is one: as `check`, but without the heartbeat.
std::optional<Danger> danger(const Facts& facts);

RevertReason revertReason(Danger danger);
HoldRefusal holdRefusal(Danger danger);

} // namespace velmo::PowerGuardPolicy

namespace velmo {

template<>
inline constexpr auto rawTexts<PowerGuardPolicy::Revert> =
    std::to_array<std::string_view>({"heartbeat", "battery", "thermal"});

} // namespace velmo
