#pragma once

#include "platform/sessions/WatchedDescriptor.h"
#include "sessions/SessionHost.h"

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace velmo {

/// The sockets by which the peers of one user reach the session host.
class SessionDoors {
public:
    /// `afterwards` is called each time after the host has been told of an event.
    SessionDoors(asio::io_context& context, SessionHost& host, std::function<void()> afterwards);

    /// Listens on the socket with this path, instead of the door's previous socket. Returns false
    /// if the new one can't be bound.
    [[nodiscard]] bool open(SessionHost::Door door, const std::string& path);

private:
    void acceptAll(SessionHost::Door door);

    asio::io_context& context_;
    SessionHost& host_;
    std::function<void()> afterwards_;
    asio::steady_timer pause_;
    std::array<std::shared_ptr<WatchedDescriptor>, 2> listeners_;
    std::uint64_t lastPeer_ = 0;
};

} // namespace velmo
