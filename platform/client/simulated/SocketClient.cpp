#include "platform/client/simulated/SocketClient.h"

#include "core/output/Output.h"

#include <asio/buffer.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>

#include <optional>
#include <utility>

namespace velmo {

std::shared_ptr<SocketClient> SocketClient::connect(asio::io_context& context,
                                                    const std::filesystem::path& socket,
                                                    std::function<void(PowerLink::Loss)> onLost) {
    const std::shared_ptr<SocketClient> client(new SocketClient(context));
    std::optional<asio::local::stream_protocol::endpoint> address;
    try {
        address.emplace(socket.string());
    } catch (const std::system_error&) { // the path is too long
        return nullptr;
    }
    client->onLost_ = std::move(onLost);
    client->socket_.async_connect(
        *address, [client](const std::error_code& error) { client->connected(error); });
    // Reads and writes under way keep the client itself alive. The caller gets a handle: its end
    // closes the connection and lets them finish.
    return {client.get(), [client](SocketClient* /*owned by client*/) { client->close(); }};
}

void SocketClient::hold(std::int64_t batteryFloor, HoldReply reply) {
    call({.call = PowerCall::hold, .batteryFloor = batteryFloor},
         [reply = std::move(reply)](const ReplyLine& line) {
             reply(line.ok, line.reason.value_or(""));
         });
}

void SocketClient::heartbeat(Reply reply) {
    call({.call = PowerCall::heartbeat},
         [reply = std::move(reply)](const ReplyLine& line) { reply(line.ok); });
}

void SocketClient::release(Reply reply) {
    call({.call = PowerCall::release},
         [reply = std::move(reply)](const ReplyLine& line) { reply(line.ok); });
}

void SocketClient::report(ReportReply reply) {
    call({.call = PowerCall::report, .batteryFloor = {}},
         [reply = std::move(reply)](const ReplyLine& line) { reply(line.report); });
}

void SocketClient::call(const CallLine& line, OnReply onReply) {
    awaited_.push_back(std::move(onReply));
    Output::print(line, [this](std::string_view text) { toSend_.emplace_back(text); });
    if (isConnected_ && toSend_.size() == 1)
        writeNext();
}

void SocketClient::connected(const std::error_code& error) {
    if (error) {
        lost(PowerLink::Loss::ended);
        return;
    }
    isConnected_ = true;
    readReply();
    if (!toSend_.empty())
        writeNext();
}

void SocketClient::writeNext() {
    asio::async_write(
        socket_, asio::buffer(toSend_.front()),
        [self = shared_from_this()](const std::error_code& error, std::size_t /*size*/) {
            // A failure is noticed by the read that is always under way.
            if (error)
                return;
            self->toSend_.pop_front();
            if (!self->toSend_.empty())
                self->writeNext();
        });
}

void SocketClient::readReply() {
    asio::async_read_until(
        socket_, asio::dynamic_buffer(received_, maxReplyLine), '\n',
        [self = shared_from_this()](const std::error_code& error, std::size_t size) {
            self->received(error, size);
        });
}

void SocketClient::received(const std::error_code& error, std::size_t size) {
    const auto line =
        error ? std::nullopt : decodeRecord<ReplyLine>(std::string_view(received_).substr(0, size));
    const bool isRefused = line && line->reason == tooManyClients;
    if (!line || isRefused || awaited_.empty()) {
        lost(isRefused ? PowerLink::Loss::tooManyClients : PowerLink::Loss::ended);
        return;
    }
    received_.erase(0, size);
    const auto onReply = std::move(awaited_.front());
    awaited_.pop_front();
    readReply();
    onReply(*line);
}

void SocketClient::lost(PowerLink::Loss loss) {
    const auto handler = std::exchange(onLost_, nullptr);
    close();
    if (handler)
        handler(loss);
}

void SocketClient::close() {
    std::error_code ignored;
    socket_.close(ignored);
    awaited_.clear();
    onLost_ = nullptr;
}

} // namespace velmo
