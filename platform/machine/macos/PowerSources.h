#pragma once

#include "machine/PowerMachine.h"

#include <optional>

namespace velmo {

/// Returns IOKit's snapshot of the power sources as it is; absent if the system gives none.
std::optional<PowerSourceSnapshot> readPowerSources();

} // namespace velmo
