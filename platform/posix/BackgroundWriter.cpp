#include "platform/posix/BackgroundWriter.h"

#include "platform/posix/Io.h"

#include <condition_variable>
#include <csignal>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace velmo {

struct BackgroundWriter::Shared {
    int descriptor = -1;
    std::mutex mutex{};
    std::condition_variable changed{};
    std::deque<std::string> queue{}; ///< the first one is being written
    std::size_t queued = 0;          ///< bytes in the queue
    bool ends = false;
};

BackgroundWriter::BackgroundWriter(int descriptor) : shared_(std::make_shared<Shared>()) {
    shared_->descriptor = descriptor;
    // The new thread starts with all signals blocked, so that other threads handle them.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread([shared = shared_] { run(shared); }).detach();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

BackgroundWriter::~BackgroundWriter() {
    const std::lock_guard lock(shared_->mutex);
    shared_->ends = true;
    shared_->changed.notify_all();
}

void BackgroundWriter::write(std::string text) {
    const std::lock_guard lock(shared_->mutex);
    if (text.empty() || text.size() > maxQueued - shared_->queued)
        return;
    shared_->queued += text.size();
    shared_->queue.push_back(std::move(text));
    shared_->changed.notify_all();
}

bool BackgroundWriter::isIdle() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->queue.empty();
}

bool BackgroundWriter::finish(std::chrono::milliseconds patience) {
    std::unique_lock lock(shared_->mutex);
    return shared_->changed.wait_for(lock, patience, [this] { return shared_->queue.empty(); });
}

void BackgroundWriter::run(const std::shared_ptr<Shared>& shared) {
    std::unique_lock lock(shared->mutex);
    while (true) {
        shared->changed.wait(lock, [&] { return shared->ends || !shared->queue.empty(); });
        if (shared->ends)
            return;
        const std::string& text = shared->queue.front();
        lock.unlock();
        static_cast<void>(writeAll(shared->descriptor, text)); // a lost reader is ignored
        lock.lock();
        shared->queued -= text.size();
        shared->queue.pop_front();
        shared->changed.notify_all();
    }
}

} // namespace velmo
