#pragma once

#include <dispatch/dispatch.h>

#include <functional>

/// Makes the event sources of the main queue. A source works as long as it is kept.
namespace velmo {

/// Calls the handler every so many seconds of monotonic time, the first time after one period.
dispatch_source_t repeatOnMainQueue(double seconds, std::function<void()> handler);

/// Calls the handler for each signal of this number, which from now on has no other effect.
dispatch_source_t signalOnMainQueue(int signal, std::function<void()> handler);

} // namespace velmo
