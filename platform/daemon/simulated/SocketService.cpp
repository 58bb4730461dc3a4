#include "platform/daemon/simulated/SocketService.h"

#include "core/output/Output.h"
#include "daemon/Session.h"
#include "platform/posix/ProgramName.h"
#include "platform/posix/SocketPeer.h"
#include "platform/simulated/CallLine.h"

#include <asio/buffer.hpp>
#include <asio/post.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <utility>

namespace velmo {

namespace {

using Socket = asio::local::stream_protocol::socket;

/// The connection of one client, which keeps itself alive while a read, a call or a write is under
/// way.
class SocketConnection final : public ClientConnection,
                               public std::enable_shared_from_this<SocketConnection> {
public:
    /// Counts itself in `connections` as long as it lives.
    SocketConnection(Socket socket, ClientId id, MacFolder folder,
                     std::shared_ptr<std::atomic<std::size_t>> connections)
        : socket_(std::move(socket)),
          id_(id),
          process_(peerProcess(socket_.native_handle())),
          folder_(std::move(folder)),
          connections_(std::move(connections)) {
        ++*connections_;
    }

    SocketConnection(const SocketConnection&) = delete;
    SocketConnection& operator=(const SocketConnection&) = delete;

    ~SocketConnection() override { --*connections_; }

    [[nodiscard]] ClientId id() const override { return id_; }

    [[nodiscard]] std::optional<std::int64_t> processId() const override { return process_; }

    [[nodiscard]] std::optional<std::string> programName() const override {
        return process_.and_then(programNameOf);
    }

    /// Returns true for any requirement: a socket shows no signature. The peer's user stands for
    /// one, and is checked when the connection is resumed.
    bool requireCodeSignature(const std::string& /*requirement*/) override { return true; }

    void exportSession(std::shared_ptr<VelmoPowerProtocol> session) override {
        session_ = std::move(session);
    }

    void onInvalidation(std::function<void()> handler) override {
        invalidated_ = std::move(handler);
    }

    void resume() override {
        if (isTrusted())
            readCall();
        else
            invalidate();
    }

private:
    [[nodiscard]] bool isTrusted() {
        const auto user = peerUser(socket_.native_handle());
        const auto mac = folder_.load();
        return user && mac
               && std::ranges::find(mac->trustedUsers, std::int64_t{*user})
                      != mac->trustedUsers.end();
    }

    void readCall() {
        asio::async_read_until(
            socket_, asio::dynamic_buffer(received_, maxCallLine), '\n',
            [self = shared_from_this()](const std::error_code& error, std::size_t size) {
                self->received(error, size);
            });
    }

    void received(const std::error_code& error, std::size_t size) {
        const auto call =
            error ? std::nullopt : CallLine::parse(std::string_view(received_).substr(0, size));
        if (!call) {
            invalidate();
            return;
        }
        received_.erase(0, size);
        perform(*call);
    }

    void perform(const CallLine& call) {
        const auto reply = [self = shared_from_this()](bool ok) {
            self->post({.ok = ok, .reason = {}, .report = {}});
        };
        switch (call.call) {
        case PowerCall::hold:
            session_->hold(call.batteryFloor.value_or(0),
                           [self = shared_from_this()](bool ok, std::string_view reason) {
                               self->post({.ok = ok, .reason = std::string(reason), .report = {}});
                           });
            break;
        case PowerCall::heartbeat:
            session_->heartbeat(reply);
            break;
        case PowerCall::release:
            session_->release(reply);
            break;
        case PowerCall::report:
            session_->report([self = shared_from_this()](const std::optional<HoldReport>& report) {
                self->post({.ok = report.has_value(), .reason = {}, .report = report});
            });
            break;
        }
    }

    /// Called on the guard's queue; the socket belongs to the context's thread.
    void post(const ReplyLine& reply) {
        asio::post(socket_.get_executor(),
                   [self = shared_from_this(), reply] { self->answer(reply); });
    }

    void answer(const ReplyLine& reply) {
        Output::print(reply, [this](std::string_view line) { sent_ = line; });
        asio::async_write(
            socket_, asio::buffer(sent_),
            [self = shared_from_this()](const std::error_code& error, std::size_t /*size*/) {
                if (error)
                    self->invalidate();
                else
                    self->readCall();
            });
    }

    void invalidate() {
        std::error_code ignored;
        socket_.close(ignored);
        if (const auto handler = std::exchange(invalidated_, nullptr))
            handler();
    }

    Socket socket_;
    ClientId id_;
    std::optional<std::int64_t> process_;
    MacFolder folder_;
    std::shared_ptr<std::atomic<std::size_t>> connections_;
    std::shared_ptr<VelmoPowerProtocol> session_;
    std::function<void()> invalidated_;
    std::string received_;
    std::string sent_;
};

} // namespace

SocketService::SocketService(asio::io_context& context, MacFolder folder, std::size_t places)
    : folder_(std::move(folder)), acceptor_(context), acceptPause_(context), places_(places) {
}

std::error_code SocketService::listen(std::string_view service, std::shared_ptr<Guard> guard) {
    guard_ = std::move(guard);
    const auto path = folder_.socket(service);
    // Renamed once it listens, so that a client that finds the name can connect, and so that the
    // socket of a daemon that is gone is replaced.
    const auto unready = std::filesystem::path(path).replace_extension(".new");
    try {
        std::filesystem::remove(unready);
        acceptor_.open();
        acceptor_.bind(unready.string());
        acceptor_.listen();
        std::filesystem::rename(unready, path);
    } catch (const std::system_error& error) { // also for a path too long for a socket address
        return error.code();
    }
    acceptNext();
    return {};
}

void SocketService::acceptNext() {
    acceptor_.async_accept([this](const std::error_code& error, Socket socket) {
        if (!error) {
            admit(std::move(socket));
            acceptNext();
            return;
        }
        // Mostly a lack of descriptors, which an immediate retry would not mend.
        acceptPause_.expires_after(std::chrono::milliseconds(100));
        acceptPause_.async_wait([this](const std::error_code& /*aborted*/) { acceptNext(); });
    });
}

void SocketService::admit(Socket socket) {
    if (*taken_ < places_) {
        guard_->acceptConnection(std::make_shared<SocketConnection>(
                                     std::move(socket), ClientId{++lastClient_}, folder_, taken_),
                                 Session::make);
        return;
    }
    // Not waited for: a new socket has room for the line.
    std::error_code ignored;
    Output::print(ReplyLine{.ok = false, .reason = std::string(tooManyClients), .report = {}},
                  [&](std::string_view line) { socket.send(asio::buffer(line), 0, ignored); });
}

} // namespace velmo
