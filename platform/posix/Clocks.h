#pragma once

#include "core/support/Time.h"

#include <chrono>

/// Reads the two clocks of this machine, and counts in their unit.
namespace velmo::Clocks {

WallTime wallTime();

/// Returns the seconds since some start, sleep included. On macOS this is mach_continuous_time(3),
/// which clock_gettime(3) offers as CLOCK_MONOTONIC_RAW; on Linux it is CLOCK_BOOTTIME.
SteadyTime steadyTime();

/// Returns so many seconds as timers take them.
inline std::chrono::steady_clock::duration duration(double seconds) {
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(seconds));
}

} // namespace velmo::Clocks
