#pragma once

#include "core/support/RawText.h"

#include <cstdint>
#include <optional>
#include <string_view>

/// When a hold must be given up. Asked on every hold and on every tick.
namespace velmo::PowerGuardPolicy {

inline constexpr int minimumBattery = 10;          ///< percent; no client may drain it further
inline constexpr int highestFloor = 95;            ///< percent
inline constexpr double heartbeatTimeout = 35.0;   ///< seconds
inline constexpr double idleExit = 60.0;           ///< seconds without a hold until the daemon ends
inline constexpr int hottestAllowedThermalRaw = 1; ///< "fair"

enum class Revert { heartbeat, battery, thermal };

/// The floor within 10...95.
std::int64_t clampFloor(std::int64_t floor);

struct Facts {
    std::optional<bool> onAC;   ///< absent when no power source is reported; counts as mains
    std::optional<int> battery; ///< percent; absent never ends a hold
    std::int64_t floor = 0;     ///< percent; clamped here
    int thermalRaw = 0;         ///< 0 nominal ... 3 critical
    double lastBeat = 0;        ///< seconds since 1970
    double now = 0;             ///< seconds since 1970
};

/// The reason to give the hold up, if there is one. A stale heartbeat outranks heat, and heat
/// outranks the battery. Exactly 35 s without a heartbeat is still in time.
std::optional<Revert> check(const Facts& facts);

} // namespace velmo::PowerGuardPolicy

namespace velmo {

template<>
inline constexpr auto rawTexts<PowerGuardPolicy::Revert> =
    std::to_array<std::string_view>({"heartbeat", "battery", "thermal"});

} // namespace velmo
