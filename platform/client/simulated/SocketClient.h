#pragma once

#include "client/PowerLink.h"
#include "core/power/VelmoPowerProtocol.h"
#include "platform/simulated/CallLine.h"

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>

#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <system_error>

namespace velmo {

/// A client's connection to the daemon of a simulated Mac. Everything happens on the thread that
/// runs the context, replies and `onLost` included.
class SocketClient final : public VelmoPowerProtocol,
                           public std::enable_shared_from_this<SocketClient> {
public:
    /// Begins to connect to the socket. Returns null if the path is too long for a socket address.
    /// `onLost` is called once, when no daemon listens there or the daemon ends the connection;
    /// calls without a reply by then never get one. Releasing the returned object ends the
    /// connection too, and nothing is called after that.
    static std::shared_ptr<SocketClient> connect(asio::io_context& context,
                                                 const std::filesystem::path& socket,
                                                 std::function<void(PowerLink::Loss)> onLost);

    void hold(std::int64_t batteryFloor, HoldReply reply) override;
    void heartbeat(Reply reply) override;
    void release(Reply reply) override;
    void report(ReportReply reply) override;

private:
    using OnReply = std::function<void(const ReplyLine&)>;

    explicit SocketClient(asio::io_context& context) : socket_(context) {}

    void call(const CallLine& line, OnReply onReply);
    void connected(const std::error_code& error);
    void writeNext();
    void readReply();
    void received(const std::error_code& error, std::size_t size);
    void lost(PowerLink::Loss loss);
    void close();

    asio::local::stream_protocol::socket socket_;
    bool isConnected_ = false;
    std::function<void(PowerLink::Loss)> onLost_;
    std::deque<std::string> toSend_; ///< the first is being written
    std::deque<OnReply> awaited_;
    std::string received_;
};

} // namespace velmo
