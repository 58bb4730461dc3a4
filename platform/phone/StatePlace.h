#pragma once

#include <string>
#include <string_view>

namespace velmo {

/// Returns the path of the bridge's state folder below the home folder, in a place that neither a
/// log-out nor the system's cleaning touches.
std::string phoneStatePlace(std::string_view home);

} // namespace velmo
