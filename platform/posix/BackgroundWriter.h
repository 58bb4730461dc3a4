#pragma once

#include <chrono>
#include <memory>
#include <string>

namespace velmo {

/// Writes to a descriptor on a thread of its own, so that the caller never waits for a stopped
/// terminal or a full pipe. The descriptor may be shared with other programs, so its
/// mode is not changed. A text that does not fit into the queue is dropped.
class BackgroundWriter {
public:
    static constexpr std::size_t maxQueued = 65536; ///< bytes that wait for their turn

    explicit BackgroundWriter(int descriptor);

    /// Drops the queue. A write that is under way and waits may go on until the process ends.
    ~BackgroundWriter();

    BackgroundWriter(const BackgroundWriter&) = delete;
    BackgroundWriter& operator=(const BackgroundWriter&) = delete;

    /// Queues the text whole, or drops it.
    void write(std::string text);

    /// Tells whether everything queued has been written.
    [[nodiscard]] bool isIdle() const;

    /// Waits until everything queued has been written, but no longer than this. Tells whether it
    /// has.
    bool finish(std::chrono::milliseconds patience);

private:
    struct Shared;
    static void run(const std::shared_ptr<Shared>& shared);

    std::shared_ptr<Shared> shared_;
};

} // namespace velmo
