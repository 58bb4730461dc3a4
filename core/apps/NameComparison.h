#pragma once

#include <compare>
#include <functional>
#include <string_view>

namespace velmo {

/// Compares two names in the order of the user's language, which only the platform knows. Letter
/// case is ignored: names that differ only in letter case are equivalent. Any bytes may be
/// compared.
using NameComparison = std::function<std::weak_ordering(std::string_view, std::string_view)>;

/// How digits inside names are compared.
enum class DigitOrder {
    byCharacter, ///< "App 10" before "App 9"
    byValue,     ///< "App 9" before "App 10", "007" equivalent to "7"
};

} // namespace velmo
