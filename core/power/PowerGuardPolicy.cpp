#include "core/power/PowerGuardPolicy.h"

#include <algorithm>

namespace velmo::PowerGuardPolicy {

std::int64_t clampFloor(std::int64_t floor) {
    return std::clamp<std::int64_t>(floor, minimumBattery, highestFloor);
}

std::optional<Revert> check(const Facts& facts) {
    if (facts.now - facts.lastBeat > heartbeatTimeout)
        return Revert::heartbeat;
    if (facts.thermalRaw > hottestAllowedThermalRaw)
        return Revert::thermal;
    if (facts.onAC.value_or(true) || !facts.battery)
        return std::nullopt;
    if (*facts.battery < clampFloor(facts.floor))
        return Revert::battery;
    return std::nullopt;
}

} // namespace velmo::PowerGuardPolicy
