#pragma once

#include "daemon/Guard.h"
#include "platform/simulated/MacFolder.h"

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <system_error>

namespace velmo {

/// Serves the guard's clients on a Unix-domain socket, in place of a Mac's Mach service. A peer
/// counts as signed the way the requirement wants if the machine file trusts its user; any other is
/// dropped without a reply, as XPC does.
///
/// Peers can't harm each other. A client's next call is read only after the reply to the last one.
/// A line that is too long or not a call ends the connection. A connection beyond the limit is
/// told so and dropped.
class SocketService {
public:
    /// Far fewer than the descriptors that a process may have: pmset and the record need some too.
    static constexpr std::size_t maxConnections = 256;

    /// The caller keeps the context alive as long as the service.
    SocketService(asio::io_context& context, MacFolder folder, std::size_t places = maxConnections);

    /// Takes the socket over from a daemon that is gone, and serves the guard's clients on it from
    /// then on. Returns the error if the socket can't be made.
    [[nodiscard]] std::error_code listen(std::string_view service, std::shared_ptr<Guard> guard);

private:
    using Socket = asio::local::stream_protocol::socket;

    void acceptNext();
    void admit(Socket socket);

    MacFolder folder_;
    asio::local::stream_protocol::acceptor acceptor_;
    asio::steady_timer acceptPause_;
    std::shared_ptr<Guard> guard_;
    std::uint64_t lastClient_ = 0;
    std::size_t places_;
    /// The number of connections. A connection that outlives the service still counts itself out,
    /// on whichever thread releases it last.
    std::shared_ptr<std::atomic<std::size_t>> taken_ =
        std::make_shared<std::atomic<std::size_t>>(std::size_t{0});
};

} // namespace velmo
