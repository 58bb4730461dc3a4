#include "lab/emulated-mac/shims/WorkQueue.h"

#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/ObjectiveC.h"

#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace velmo {

struct WorkQueue::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Work> work;
    bool isOver = false;
    bool isServed = false;
    std::thread::id thread;

    /// Waits for the next work. Returns null when the queue has ended and is empty.
    Work next(std::optional<Pool>& pool) {
        std::unique_lock lock(mutex);
        if (work.empty()) {
            lock.unlock();
            pool.reset();
            lock.lock();
            changed.wait(lock, [this] { return isOver || !work.empty(); });
        }
        if (work.empty())
            return nullptr;
        Work first = std::move(work.front());
        work.pop_front();
        return first;
    }
};

WorkQueue::WorkQueue() : state_(std::make_shared<State>()) {
}

WorkQueue::~WorkQueue() {
    const std::lock_guard lock(state_->mutex);
    state_->isOver = true;
    state_->changed.notify_one();
}

void WorkQueue::serve(State& state) {
    {
        const std::lock_guard lock(state.mutex);
        state.thread = std::this_thread::get_id();
    }
    std::optional<Pool> pool;
    while (const Work work = state.next(pool)) {
        if (!pool)
            pool.emplace(Pool::Kind::lastResort);
        work();
    }
}

void WorkQueue::async(Work work) {
    const std::lock_guard lock(state_->mutex);
    if (!std::exchange(state_->isServed, true))
        std::thread([state = state_] { serve(*state); }).detach();
    state_->work.push_back(std::move(work));
    state_->changed.notify_one();
}

void WorkQueue::sync(const Work& work) {
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->thread == std::this_thread::get_id())
            misuse("dispatch_sync on the queue that the caller runs on");
    }
    std::promise<void> reached;
    std::promise<void> done;
    async([&] {
        // The caller may be gone as soon as the work is done.
        auto whenDone = done.get_future();
        reached.set_value();
        whenDone.wait();
    });
    reached.get_future().wait();
    work();
    done.set_value();
}

} // namespace velmo
