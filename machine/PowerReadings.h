#pragma once

#include "machine/PowerMachine.h"

#include <optional>

/// What follows from the raw facts of a machine.
namespace velmo {

struct PowerReading {
    std::optional<bool> ac;     ///< on mains power; absent when no providing source is reported
    std::optional<int> battery; ///< percent of the internal battery; absent without one

    bool operator==(const PowerReading&) const = default;
};

PowerReading readPower(PowerMachine& machine);

/// Tells whether sleep is disabled by the preferences, which "pmset -g" prints. The property
/// follows them. Absent if it can't be read.
std::optional<bool> sleepDisabledPreference(PowerMachine& machine);

/// Tells whether sleep is disabled, by the power root domain's property, and only where that can't
/// be read by the preference. Absent if neither tells.
std::optional<bool> sleepDisabledNow(PowerMachine& machine);

} // namespace velmo
