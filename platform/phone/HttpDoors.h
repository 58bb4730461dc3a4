#pragma once

#include "phone/PhoneBridge.h"

#include <boost/asio/io_context.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace velmo {

/// Listens on the loopback addresses of this machine, 127.0.0.1 and ::1, and on no other, and
/// speaks HTTP and WebSocket for a bridge. Everything happens on the thread that runs the context.
class HttpDoors {
public:
    static constexpr std::size_t maxRequests = 64; ///< connections that are no WebSocket
    static constexpr int patience = 10;            ///< seconds for a whole request, and a reply

    explicit HttpDoors(boost::asio::io_context& context);
    ~HttpDoors();
    HttpDoors(const HttpDoors&) = delete;
    HttpDoors& operator=(const HttpDoors&) = delete;

    /// Takes the port on both addresses, or one that is free on both if the port is 0. Returns the
    /// port; absent if another program has taken it. A machine without ::1 does without. A free
    /// port is from 20000 to 29999, since systems use higher ones for outgoing connections, which
    /// would now and then keep a remembered port from being taken again.
    std::optional<std::uint16_t> take(std::uint16_t port);

    /// Begins to serve at the port that was taken. The bridge must outlive the doors.
    void serve(PhoneBridge& bridge);

private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

} // namespace velmo
