#pragma once

#include "machine/PowerMachine.h"

#include <optional>

namespace velmo {

/// IOKit's snapshot of the power sources, as it is; absent when the system gives none.
std::optional<PowerSourceSnapshot> readPowerSources();

} // namespace velmo
