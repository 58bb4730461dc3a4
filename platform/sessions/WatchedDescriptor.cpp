#include "platform/sessions/WatchedDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace velmo {

std::shared_ptr<WatchedDescriptor> WatchedDescriptor::make(asio::io_context& context,
                                                           Descriptor descriptor,
                                                           std::function<void()> readable,
                                                           std::function<void()> writable) {
    const int flags = ::fcntl(descriptor.get(), F_GETFL);
    ::fcntl(descriptor.get(), F_SETFL, flags | O_NONBLOCK);
    return std::shared_ptr<WatchedDescriptor>(new WatchedDescriptor(
        context, std::move(descriptor), std::move(readable), std::move(writable)));
}

WatchedDescriptor::WatchedDescriptor(asio::io_context& context, Descriptor descriptor,
                                     std::function<void()> readable, std::function<void()> writable)
    : stream_(context, descriptor.release()),
      writableStream_(context),
      readable_{.type = Stream::wait_read, .ready = std::move(readable)},
      writable_{.type = Stream::wait_write, .ready = std::move(writable)} {
}

void WatchedDescriptor::watch(bool readable, bool writable) {
    readable_.isWanted = readable;
    writable_.isWanted = writable;
    wait(&WatchedDescriptor::readable_);
    wait(&WatchedDescriptor::writable_);
}

void WatchedDescriptor::close() {
    readable_.isWanted = false;
    writable_.isWanted = false;
    endWritableStream();
    std::error_code ignored;
    stream_.close(ignored);
}

void WatchedDescriptor::wait(Side WatchedDescriptor::* side) {
    Side& waiting = this->*side;
    if (!waiting.isWanted || waiting.isPending)
        return;
    waiting.isPending = true;
    streamFor(waiting).async_wait(
        waiting.type, [self = shared_from_this(), side](const std::error_code& aborted) {
            Side& woken = (*self).*side;
            woken.isPending = false;
            if (!aborted && woken.isWanted) {
                woken.ready();
                self->wait(side);
            }
            if (!self->writable_.isPending)
                self->endWritableStream();
        });
}

/// Returns the stream to wait on. Room to write is waited for on a copy of the descriptor, or on
/// the descriptor itself if the system has no number left for a copy.
WatchedDescriptor::Stream& WatchedDescriptor::streamFor(const Side& side) {
    if (&side == &readable_)
        return stream_;
    if (!writableStream_.is_open()) {
        const int copy = ::fcntl(get(), F_DUPFD_CLOEXEC, 0);
        std::error_code failed;
        if (copy >= 0)
            writableStream_.assign(copy, failed);
        if (failed)
            ::close(copy);
    }
    return writableStream_.is_open() ? writableStream_ : stream_;
}

/// Has Asio release the copy before it is closed. Closing alone would not make the system forget
/// the copy, since the descriptor itself stays open.
void WatchedDescriptor::endWritableStream() {
    if (writableStream_.is_open())
        ::close(writableStream_.release());
}

} // namespace velmo
