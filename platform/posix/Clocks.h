#pragma once

#include "core/support/Time.h"

/// Reads the two clocks of this machine.
namespace velmo::Clocks {

WallTime wallTime();

/// Returns the seconds since some start, sleep included. On macOS this is mach_continuous_time(3),
/// which clock_gettime(3) offers as CLOCK_MONOTONIC_RAW; on Linux it is CLOCK_BOOTTIME.
SteadyTime steadyTime();

} // namespace velmo::Clocks
