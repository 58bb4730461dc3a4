#include "platform/posix/Clocks.h"

#include <ctime>

namespace velmo::Clocks {

namespace {

#ifdef CLOCK_BOOTTIME
constexpr clockid_t continuous = CLOCK_BOOTTIME;
#else
constexpr clockid_t continuous = CLOCK_MONOTONIC_RAW;
#endif

/// Reads one of the two clocks. Every system has both, so the call does not fail.
double secondsOf(clockid_t clock) {
    timespec now{};
    ::clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace

WallTime wallTime() {
    return {secondsOf(CLOCK_REALTIME)};
}

SteadyTime steadyTime() {
    return {secondsOf(continuous)};
}

} // namespace velmo::Clocks
