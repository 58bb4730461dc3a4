#pragma once

#include <array>
#include <optional>
#include <string_view>

/// Reading what the system's tools and services say of sleep and heat.
namespace velmo {

/// The sleep-disabled setting in the output of "pmset -g": the first line whose first field is
/// "SleepDisabled" and that has a second one decides; "1" is true, anything else false. Absent when
/// there is no such line.
std::optional<bool> parseSleepDisabled(std::string_view text);

/// The names of the raw thermal states 0 to 3 (`NSProcessInfoThermalState`).
inline constexpr std::array<std::string_view, 4> thermalNames{"nominal", "fair", "serious",
                                                              "critical"};

/// The name of a raw thermal state; a number that is not known is as bad as the worst.
std::string_view thermalName(int raw);

} // namespace velmo
