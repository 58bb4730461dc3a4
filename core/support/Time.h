#pragma once

#include <compare>

/// Two clocks that must not be mixed up.
namespace velmo {

/// A moment of the clock that shows the date. People and the network set it, forwards and back.
struct WallTime {
    double sinceEpoch = 0; ///< seconds since 1970

    auto operator<=>(const WallTime&) const = default;
};

/// A moment of the clock that can't be set and that goes on while the machine sleeps. Ages are
/// measured by it; where it begins has no meaning.
struct SteadyTime {
    double seconds = 0;

    auto operator<=>(const SteadyTime&) const = default;

    /// Returns the seconds from the other moment to this one.
    constexpr double operator-(SteadyTime earlier) const { return seconds - earlier.seconds; }
};

} // namespace velmo
