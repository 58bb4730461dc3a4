#pragma once

#include <compare>
#include <functional>
#include <string_view>

namespace velmo {

/// The order in which the user's language lists names, which only the platform knows: without
/// regard to case, so that names that differ in nothing else are equivalent. Total for any bytes.
using NameComparison = std::function<std::weak_ordering(std::string_view, std::string_view)>;

/// How digits inside names compare.
enum class DigitOrder {
    byCharacter, ///< "App 10" before "App 9"
    byValue,     ///< "App 9" before "App 10", "007" equivalent to "7"
};

} // namespace velmo
