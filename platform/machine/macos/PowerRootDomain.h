#pragma once

#include <optional>

namespace velmo {

/// The property "SleepDisabled" of IOKit's power root domain; absent when there is no such service
/// or the property is no Boolean.
std::optional<bool> sleepDisabledInRootDomain();

} // namespace velmo
