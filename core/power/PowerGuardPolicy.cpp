#include "core/power/PowerGuardPolicy.h"

namespace velmo::PowerGuardPolicy {

std::optional<Revert> check(const Facts& facts) {
    if (facts.now - facts.lastBeat > heartbeatTimeout)
        return Revert::heartbeat;
    return danger(facts).transform([](Danger danger) {
        return danger == Danger::thermal ? Revert::thermal : Revert::battery;
    });
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

std::optional<Danger> danger(const Facts& facts) {
    if (facts.thermalRaw > maxThermal)
        return Danger::thermal;
    if (facts.onAC.value_or(true) || !facts.battery)
        return std::nullopt;
    if (*facts.battery < facts.floor.percent())
        return Danger::battery;
    return std::nullopt;
}

RevertReason revertReason(Danger danger) {
    return danger == Danger::battery ? RevertReason::battery : RevertReason::thermal;
}

HoldRefusal holdRefusal(Danger danger) {
    return danger == Danger::battery ? HoldRefusal::battery : HoldRefusal::thermal;
}

} // namespace velmo::PowerGuardPolicy
