#pragma once

#include <optional>
#include <string_view>

namespace velmo {

/// Returns the sleep-disabled setting in the output of "pmset -g". The first line whose first field
/// is "SleepDisabled" and that has a second one decides: "1" is true, anything else false. Absent
/// if there is no such line.
std::optional<bool> parseSleepDisabled(std::string_view text);

} // namespace velmo
