#pragma once

#include "core/support/Time.h"

#include <chrono>

/// Reads the two clocks of this machine, and counts in their unit.
namespace velmo::Clocks {

WallTime wallTime();

/// Returns the seconds since a fixed but unknown moment, sleep included. On macOS this is
/// mach_continuous_time(3), which clock_gettime(3) offers as CLOCK_MONOTONIC_RAW; on Linux it is
/// CLOCK_BOOTTIME.
SteadyTime steadyTime();

/// Returns seconds as the duration that timers accept.
inline std::chrono::steady_clock::duration duration(double seconds) {
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(seconds));
}

} // namespace velmo::Clocks
