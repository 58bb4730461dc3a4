#pragma once

#include "daemon/SerialQueue.h"

#include <deque>
#include <utility>

namespace velmo {

/// Runs its work when the test says so, in the order of posting.
class StepQueue final : public SerialQueue {
public:
    void async(Work work) override { pending_.push_back(std::move(work)); }

    void sync(const Work& work) override {
        runAll();
        if (behindSync)
            async(std::exchange(behindSync, nullptr));
        work();
        runAll();
    }

    void runAll() {
        while (!pending_.empty()) {
            const Work work = std::move(pending_.front());
            pending_.pop_front();
            work();
        }
    }

    /// Work that another thread posts while the next `sync` waits. The queue puts it behind the
    /// work of `sync`, and runs it before `sync` returns.
    Work behindSync;

private:
    std::deque<Work> pending_;
};

} // namespace velmo
