#pragma once

#include <optional>
#include <string_view>

namespace velmo {

/// Returns the sleep-disabled setting in the output of "pmset -g". The first line with the
/// first field "SleepDisabled" and a second field decides: "1" is true, anything else false. Absent
/// without such a line.
std::optional<bool> parseSleepDisabled(std::string_view text);

} // namespace velmo
