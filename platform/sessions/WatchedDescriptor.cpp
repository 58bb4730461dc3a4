#include "platform/sessions/WatchedDescriptor.h"

#include <fcntl.h>

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
      readable_{.type = asio::posix::stream_descriptor::wait_read, .ready = std::move(readable)},
      writable_{.type = asio::posix::stream_descriptor::wait_write, .ready = std::move(writable)} {
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
    std::error_code ignored;
    stream_.close(ignored);
}

void WatchedDescriptor::wait(Side WatchedDescriptor::* side) {
    Side& waiting = this->*side;
    if (!waiting.isWanted || waiting.isPending)
        return;
    waiting.isPending = true;
    stream_.async_wait(waiting.type,
                       [self = shared_from_this(), side](const std::error_code& aborted) {
                           Side& woken = (*self).*side;
                           woken.isPending = false;
                           if (aborted || !woken.isWanted)
                               return;
                           woken.ready();
                           self->wait(side);
                       });
}

} // namespace velmo
