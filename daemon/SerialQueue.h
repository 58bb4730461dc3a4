#pragma once

#include <functional>

namespace velmo {

/// Runs work one piece at a time, in the order in which it was posted.
class SerialQueue {
public:
    using Work = std::function<void()>;

    virtual ~SerialQueue() = default;

    /// Posts the work and returns at once. Any thread may call it.
    virtual void async(Work work) = 0;

    /// Posts the work and returns when it has run. Work that runs on this queue must not call it:
    /// it would wait for itself.
    virtual void sync(const Work& work) = 0;
};

} // namespace velmo
