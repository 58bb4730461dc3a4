#pragma once

#include <dispatch/dispatch.h>

#include <functional>

/// What wakes the main queue. A source works as long as it is kept.
namespace velmo {

/// Every so many seconds of monotonic time, the first time after one period.
dispatch_source_t repeatOnMainQueue(double seconds, std::function<void()> handler);

/// From now on the signal has no effect but this.
dispatch_source_t signalOnMainQueue(int signal, std::function<void()> handler);

} // namespace velmo
