#include "core/power/PowerGuardPolicy.h"

namespace velmo::PowerGuardPolicy {

std::optional<Revert> check(const Facts& facts) {
    if (facts.now - facts.lastBeat > heartbeatTimeout)
        return Revert::heartbeat;
    if (facts.thermalRaw > maxThermal)
        return Revert::thermal;
    if (facts.onAC.value_or(true) || !facts.battery)
        return std::nullopt;
    if (*facts.battery < facts.floor.percent())
        return Revert::battery;
    return std::nullopt;
}

RevertReason revertReason(Revert reason) {
    switch (reason) {
    case Revert::heartbeat:
        return RevertReason::heartbeat;
    case Revert::battery:
        return RevertReason::battery;
    case Revert::thermal:
        break;
    }
    return RevertReason::thermal;
}

HoldRefusal holdRefusal(Revert reason) {
    return reason == Revert::battery ? HoldRefusal::battery : HoldRefusal::thermal;
}

} // namespace velmo::PowerGuardPolicy
