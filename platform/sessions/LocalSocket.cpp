#include "platform/sessions/LocalSocket.h"

#include "platform/posix/Io.h"
#include "platform/posix/SocketAddress.h"
#include "platform/posix/SocketPeer.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <optional>

namespace velmo::LocalSocket {

namespace {

/// Returns the address of a socket in the file system. Absent for an empty path and for one with
/// NUL, which would name something else than a file.
std::optional<sockaddr_un> addressOf(const std::string& path) {
    return path.empty() || path.contains('\0') ? std::nullopt : socketAddress(path);
}

Descriptor closedOnExec(int socket) {
    Descriptor descriptor(socket);
    if (descriptor && ::fcntl(descriptor.get(), F_SETFD, FD_CLOEXEC) != 0)
        descriptor.reset();
    return descriptor;
}

Descriptor newSocket() {
    return closedOnExec(::socket(AF_UNIX, SOCK_STREAM, 0));
}

const sockaddr* generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

} // namespace

Descriptor connect(const std::string& path) {
    const auto address = addressOf(path);
    Descriptor socket = address ? newSocket() : Descriptor();
    if (!socket || retryInterrupted([&] {
                       return ::connect(socket.get(), generic(*address), sizeof *address);
                   }) != 0
        || peerUser(socket.get()) != ::getuid())
        return {};
    return socket;
}

Descriptor listen(const std::string& path) {
    const std::string unready = path + ".new";
    const auto address = addressOf(unready);
    Descriptor socket = address ? newSocket() : Descriptor();
    if (!socket)
        return {};
    ::unlink(unready.c_str());
    if (::bind(socket.get(), generic(*address), sizeof *address) != 0
        || ::chmod(unready.c_str(), 0600) != 0 || ::listen(socket.get(), SOMAXCONN) != 0
        || ::rename(unready.c_str(), path.c_str()) != 0)
        return {};
    return socket;
}

Descriptor accept(int listener) {
    Descriptor socket =
        closedOnExec(retryInterrupted([&] { return ::accept(listener, nullptr, nullptr); }));
    if (socket && peerUser(socket.get()) != ::getuid())
        socket.reset();
    return socket;
}

} // namespace velmo::LocalSocket
