#pragma once

#include "machine/PowerMachine.h"

#include <optional>

/// IOKit's power root domain ("IOPMrootDomain"), by its registry properties and its one request.
namespace velmo {

/// Returns the property "SleepDisabled". Absent if the service is missing or the property is not a
/// Boolean.
std::optional<bool> sleepDisabledInRootDomain();

/// Returns "AppleClamshellState" and "AppleClamshellCausesSleep". Absent if either is missing or
/// not a Boolean.
std::optional<LidState> lidInRootDomain();

/// Asks the system to sleep (IOPMLib.h). Returns whether the system took the request.
bool requestSystemSleep();

} // namespace velmo
