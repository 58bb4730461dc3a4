#pragma once

#include <optional>
#include <string_view>

namespace velmo {

/// Returns the value of the cookie of this name in a request's "Cookie" header, name=value pairs
/// between "; ". Absent if the header has no such cookie or several. The view points into the
/// header.
std::optional<std::string_view> cookieIn(std::string_view header, std::string_view name);

} // namespace velmo
