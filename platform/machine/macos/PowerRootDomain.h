#pragma once

#include <optional>

namespace velmo {

/// Returns the property "SleepDisabled" of IOKit's power root domain; absent if there is no such
/// service or the property is not a Boolean.
std::optional<bool> sleepDisabledInRootDomain();

} // namespace velmo
