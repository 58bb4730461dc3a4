#include "platform/posix/SocketPeer.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace velmo {

namespace {

template<class T>
std::optional<T> socketOption(int socket, int level, int name) {
    T value{};
    socklen_t size = sizeof value;
    if (::getsockopt(socket, level, name, &value, &size) != 0)
        return std::nullopt;
    return value;
}

} // namespace

#ifdef SO_PEERCRED

std::optional<uid_t> peerUser(int socket) {
    return socketOption<ucred>(socket, SOL_SOCKET, SO_PEERCRED).transform([](const ucred& peer) {
        return peer.uid;
    });
}

std::optional<pid_t> peerProcess(int socket) {
    return socketOption<ucred>(socket, SOL_SOCKET, SO_PEERCRED).transform([](const ucred& peer) {
        return peer.pid;
    });
}

#else

std::optional<uid_t> peerUser(int socket) {
    uid_t user = 0;
    gid_t group = 0;
    if (::getpeereid(socket, &user, &group) != 0)
        return std::nullopt;
    return user;
}

std::optional<pid_t> peerProcess(int socket) {
    return socketOption<pid_t>(socket, SOL_LOCAL, LOCAL_PEERPID);
}

#endif

} // namespace velmo
