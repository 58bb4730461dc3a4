#pragma once

#include <functional>
#include <memory>

namespace velmo {

/// A serial queue of the system's own: one thread that runs one piece of work after the other, with
/// an autorelease pool of last resort that is emptied when there is nothing left to do (libdispatch
/// does the same on its worker threads). The thread ends once the last reference is gone and the
/// queue is idle.
class WorkQueue {
public:
    using Work = std::function<void()>;

    WorkQueue();
    ~WorkQueue();
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    void async(Work work);

    /// Runs the work on the calling thread, once all work queued before is done. Ends the run if
    /// the calling thread is the queue's, which would wait for itself for ever.
    void sync(const Work& work);

private:
    struct State;
    static void serve(State& state);

    std::shared_ptr<State> state_;
};

} // namespace velmo
