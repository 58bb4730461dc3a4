#include "platform/daemon/simulated/PeerUser.h"

#include <sys/socket.h>
#include <unistd.h>

namespace velmo {

std::optional<uid_t> peerUser(int socket) {
#ifdef SO_PEERCRED
    ucred credentials{};
    socklen_t size = sizeof credentials;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0)
        return std::nullopt;
    return credentials.uid;
#else
    uid_t user = 0;
    gid_t group = 0;
    if (::getpeereid(socket, &user, &group) != 0)
        return std::nullopt;
    return user;
#endif
}

} // namespace velmo
