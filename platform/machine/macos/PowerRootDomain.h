#pragma once

#include "machine/PowerMachine.h"

#include <optional>

/// IOKit's power root domain ("IOPMrootDomain"), by its registry properties and its one request.
namespace velmo {

/// Returns the property "SleepDisabled". Absent if there is no such service or the property is no
/// Boolean.
std::optional<bool> sleepDisabledInRootDomain();

/// Returns "AppleClamshellState" and "AppleClamshellCausesSleep". Absent if either is missing.
std::optional<LidState> lidInRootDomain();

/// Asks the system to sleep (IOPMLib.h). Returns whether it took the request.
bool requestSystemSleep();

} // namespace velmo
