#pragma once

#include "platform/posix/Descriptor.h"

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>

#include <functional>
#include <memory>

namespace velmo {

/// A descriptor in non-blocking mode, with what is called when it can be read or written, as long
/// as that is watched for. It is made by `make`, and keeps itself alive while a callback runs.
class WatchedDescriptor : public std::enable_shared_from_this<WatchedDescriptor> {
public:
    static std::shared_ptr<WatchedDescriptor> make(asio::io_context& context, Descriptor descriptor,
                                                   std::function<void()> readable,
                                                   std::function<void()> writable);

    [[nodiscard]] int get() { return stream_.native_handle(); }

    void watch(bool readable, bool writable);

    /// Closes the descriptor. Nothing is called any more.
    void close();

private:
    struct Side {
        asio::posix::stream_descriptor::wait_type type;
        std::function<void()> ready;
        bool isWanted = false;
        bool isPending = false;
    };

    WatchedDescriptor(asio::io_context& context, Descriptor descriptor,
                      std::function<void()> readable, std::function<void()> writable);

    void wait(Side WatchedDescriptor::* side);

    asio::posix::stream_descriptor stream_;
    Side readable_;
    Side writable_;
};

} // namespace velmo
