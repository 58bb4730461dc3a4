#pragma once

#include <chrono>
#include <memory>
#include <string>

namespace velmo {

/// Writes to a descriptor on a thread of its own, so that a terminal that was stopped or a pipe
/// that nobody reads keeps nobody waiting. The descriptor may be shared with other programs and is
/// left as it is. What does not fit into the queue is dropped.
class BackgroundWriter {
public:
    static constexpr std::size_t maxQueued = 65536; ///< bytes that wait for their turn

    explicit BackgroundWriter(int descriptor);

    /// Lets what is queued go. A write that is under way goes on until the process ends.
    ~BackgroundWriter();

    BackgroundWriter(const BackgroundWriter&) = delete;
    BackgroundWriter& operator=(const BackgroundWriter&) = delete;

    /// Queues the text, to be written as a whole.
    void write(std::string text);

    /// Tells whether all is written.
    [[nodiscard]] bool isIdle() const;

    /// Waits until all is written, but no longer than this. Returns whether it is.
    bool finish(std::chrono::milliseconds patience);

private:
    struct Shared;
    static void run(const std::shared_ptr<Shared>& shared);

    std::shared_ptr<Shared> shared_;
};

} // namespace velmo
