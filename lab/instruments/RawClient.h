#pragma once

#include "platform/posix/Descriptor.h"
#include "platform/posix/Io.h"
#include "platform/posix/SocketAddress.h"

#include <sys/time.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace velmo {

/// A peer of a Unix-domain socket that sends whatever bytes it likes. Waits for a reply, or for
/// room to send, no longer than 20 seconds.
class RawClient {
public:
    explicit RawClient(const std::filesystem::path& socket)
        : socket_(::socket(AF_UNIX, SOCK_STREAM, 0)) {
        const auto address = socketAddress(socket);
        if (!address)
            socket_.reset();
        if (!socket_)
            return;
        const timeval patience{.tv_sec = 20, .tv_usec = 0};
        ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        ::setsockopt(socket_.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address)
            != 0)
            socket_.reset();
    }

    explicit operator bool() const { return static_cast<bool>(socket_); }

    /// Returns false if the other side has closed.
    bool send(std::string_view bytes) const { return writeAll(socket_.get(), bytes); }

    /// Returns the next line without its line feed, or "" if the other side has closed.
    std::string readLine() const {
        std::string line;
        char next = 0;
        while (retryInterrupted([&] { return ::read(socket_.get(), &next, 1); }) == 1) {
            if (next == '\n')
                return line;
            line += next;
        }
        return "";
    }

    /// Sends a line and returns the next one, or "" if the other side has closed.
    std::string call(std::string_view line) const {
        return send(std::string(line) + "\n") ? readLine() : "";
    }

private:
    Descriptor socket_;
};

} // namespace velmo
