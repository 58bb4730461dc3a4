#pragma once

#include "daemon/SerialQueue.h"

#include <asio/post.hpp>
#include <asio/thread_pool.hpp>

#include <future>
#include <utility>

namespace velmo {

/// Runs the work on a thread of its own, so that a slow pmset never keeps the main loop from its
/// timer, its signals and its sockets.
class ThreadQueue final : public SerialQueue {
public:
    void async(Work work) override { asio::post(thread_, std::move(work)); }

    void sync(const Work& work) override {
        std::promise<void> done;
        asio::post(thread_, [&] {
            work();
            done.set_value();
        });
        done.get_future().wait();
    }

private:
    asio::thread_pool thread_{1};
};

} // namespace velmo
