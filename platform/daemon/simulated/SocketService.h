#pragma once

#include "daemon/Guard.h"
#include "platform/simulated/MacFolder.h"

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace velmo {

/// The Mach service of a simulated Mac: a Unix-domain socket. Every peer whose user the machine
/// file trusts counts as signed as the requirement wants; the others are dropped without a word, as
/// XPC drops them.
///
/// Peers can't harm each other: a client is read only after its last call was answered, a line has
/// a limit, whatever is no call ends its connection, and there are only so many connections.
class SocketService {
public:
    /// Far fewer than descriptors: what is left over is for pmset and the record.
    static constexpr std::size_t mostConnections = 256;

    SocketService(asio::io_context& context, MacFolder folder) noexcept;

    /// Takes the socket over from a daemon that is gone. False: it can't be bound.
    [[nodiscard]] bool listen(std::string_view service, std::shared_ptr<Guard> guard);

private:
    using Socket = asio::local::stream_protocol::socket;

    void acceptNext();
    void admit(Socket socket);

    asio::io_context& context_;
    MacFolder folder_;
    asio::local::stream_protocol::acceptor acceptor_;
    asio::steady_timer acceptPause_;
    std::shared_ptr<Guard> guard_;
    std::uint64_t lastClient_ = 0;
    /// Counts the connections alive, one owner each, beside our own.
    std::shared_ptr<const bool> places_ = std::make_shared<const bool>(true);
};

} // namespace velmo
