#include "platform/sessions/SessionDoors.h"

#include "platform/posix/Io.h"
#include "platform/posix/SocketPeer.h"
#include "platform/sessions/LocalSocket.h"
#include "platform/sessions/SessionProcesses.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

namespace velmo {

namespace {

constexpr std::size_t maxReceived = std::size_t{1} << 16; // bytes at once
constexpr std::size_t maxPieces = 4;

class SocketConnection final : public Connection {
public:
    void use(std::shared_ptr<WatchedDescriptor> socket) { socket_ = std::move(socket); }

    [[nodiscard]] int get() const { return socket_->get(); }

    [[nodiscard]] std::optional<std::size_t> send(std::span<const ByteView> pieces) override {
        std::array<iovec, maxPieces> parts{};
        const std::size_t count = std::min(pieces.size(), parts.size());
        std::ranges::transform(pieces.first(count), parts.begin(), [](ByteView piece) {
            // writev does not write to it; iovec has one type for both directions.
            return iovec{.iov_base = const_cast<std::uint8_t*>(piece.data()),
                         .iov_len = piece.size()};
        });
        const ssize_t sent = retryInterrupted(
            [&] { return ::writev(socket_->get(), parts.data(), static_cast<int>(count)); });
        if (sent >= 0)
            return static_cast<std::size_t>(sent);
        return errno == EAGAIN ? std::optional<std::size_t>(0) : std::nullopt;
    }

    void watch(bool readable, bool writable) override { socket_->watch(readable, writable); }

    [[nodiscard]] std::vector<std::uint32_t> ancestry() const override {
        const std::vector<pid_t> processes = ancestryOf(peerProcess(socket_->get()).value_or(0));
        return {processes.begin(), processes.end()};
    }

    void close() override { socket_->close(); }

private:
    std::shared_ptr<WatchedDescriptor> socket_;
};

} // namespace

SessionDoors::SessionDoors(asio::io_context& context, SessionHost& host,
                           std::function<void()> afterwards)
    : context_(context), host_(host), afterwards_(std::move(afterwards)), pause_(context) {
}

bool SessionDoors::open(SessionHost::Door door, const std::string& path) {
    Descriptor socket = LocalSocket::listen(path);
    if (!socket)
        return false;
    auto& listener = listeners_[static_cast<std::size_t>(door)];
    if (listener)
        listener->close();
    listener = WatchedDescriptor::make(
        context_, std::move(socket), [this, door] { acceptAll(door); }, [] {});
    listener->watch(true, false);
    return true;
}

void SessionDoors::acceptAll(SessionHost::Door door) {
    const auto& listener = listeners_[static_cast<std::size_t>(door)];
    Descriptor socket = LocalSocket::accept(listener->get());
    if (!socket) {
        // Mostly a lack of descriptors, which another try at once would not mend.
        listener->watch(false, false);
        pause_.expires_after(std::chrono::milliseconds(100));
        pause_.async_wait([this](const std::error_code& aborted) {
            if (aborted)
                return; // the other listener has begun the same pause anew
            for (const auto& each : listeners_)
                each->watch(true, false);
        });
        return;
    }
    const PeerId peer{++lastPeer_};
    auto connection = std::make_shared<SocketConnection>();
    const auto receive = [this, peer, weak = std::weak_ptr(connection)] {
        const auto alive = weak.lock();
        static std::array<std::uint8_t, maxReceived> room; // used by one thread
        const ssize_t count =
            retryInterrupted([&] { return ::read(alive->get(), room.data(), room.size()); });
        if (count > 0)
            host_.received(peer, ByteView(room).first(static_cast<std::size_t>(count)));
        else if (count == 0 || errno != EAGAIN)
            host_.connectionLost(peer);
        afterwards_();
    };
    const auto send = [this, peer] {
        host_.writable(peer);
        afterwards_();
    };
    connection->use(WatchedDescriptor::make(context_, std::move(socket), receive, send));
    host_.connected(peer, std::move(connection), door);
    afterwards_();
}

} // namespace velmo
