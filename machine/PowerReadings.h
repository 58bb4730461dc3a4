#pragma once

#include "machine/PowerMachine.h"

#include <optional>

/// Reads what follows from the raw facts of a machine.
namespace velmo {

struct PowerReading {
    std::optional<bool> ac;     ///< on mains power; absent when no providing source is reported
    std::optional<int> battery; ///< percent of the internal battery; absent without one

    bool operator==(const PowerReading&) const = default;
};

PowerReading readPower(PowerMachine& machine);

/// Tells whether the preferences, which "pmset -g" prints, disable sleep. The power root domain's
/// property follows them. Absent if they can't be read.
std::optional<bool> sleepDisabledPreference(PowerMachine& machine);

/// Tells whether sleep is disabled: by the power root domain's property, or by the preferences if
/// the property can't be read. Absent if neither can be read.
std::optional<bool> sleepDisabledNow(PowerMachine& machine);

} // namespace velmo
