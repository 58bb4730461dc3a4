#pragma once

#include "platform/posix/Descriptor.h"

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>

#include <functional>
#include <memory>

namespace velmo {

/// A descriptor in non-blocking mode, with callbacks for when it can be read or written. A callback
/// is called as long as its event is watched for. The object keeps itself alive while it waits for
/// an event and while a callback runs.
class WatchedDescriptor : public std::enable_shared_from_this<WatchedDescriptor> {
public:
    static std::shared_ptr<WatchedDescriptor> make(asio::io_context& context, Descriptor descriptor,
                                                   std::function<void()> readable,
                                                   std::function<void()> writable);

    [[nodiscard]] int get() { return stream_.native_handle(); }

    void watch(bool readable, bool writable);

    /// Closes the descriptor. No callback is called afterwards.
    void close();

private:
    using Stream = asio::posix::stream_descriptor;

    struct Side {
        Stream::wait_type type;
        std::function<void()> ready;
        bool isWanted = false;
        bool isPending = false;
    };

    WatchedDescriptor(asio::io_context& context, Descriptor descriptor,
                      std::function<void()> readable, std::function<void()> writable);

    void wait(Side WatchedDescriptor::* side);
    Stream& streamFor(const Side& side);
    void endWritableStream();

    Stream stream_;
    /// A copy of the descriptor, open only while room to write is waited for. Once Asio has asked
    /// the system about a descriptor's room, it never stops asking, and would wake up whenever the
    /// other side reads: twice for every key that is echoed.
    Stream writableStream_;
    Side readable_;
    Side writable_;
};

} // namespace velmo
