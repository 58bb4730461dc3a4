/// libSystem's sockets (<sys/socket.h>, XNU's <sys/un.h>): streams within this machine.

#include "lab/emulated-mac/shims/Darwin.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Machine.h"
#include "lab/emulated-mac/shims/Process.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace velmo {

namespace {

/// XNU's <sys/un.h>. The path ends at a NUL or with the address.
struct DarwinAddress {
    std::uint8_t size;
    std::uint8_t family;
    std::array<char, 104> path;
};

static_assert(sizeof(DarwinAddress) == 106);

constexpr int darwinSocketLevel = 0xFFFF;  // SOL_SOCKET
constexpr int darwinErrorOption = 0x1007;  // SO_ERROR
constexpr int darwinNoSignal = 0x1022;     // SO_NOSIGPIPE
constexpr int darwinLocalLevel = 0;        // SOL_LOCAL
constexpr int darwinPeerProcess = 2;       // LOCAL_PEERPID
constexpr int darwinReadPatience = 0x1006; // SO_RCVTIMEO

struct DarwinTime {
    std::int64_t seconds;
    std::int32_t microseconds;
};

sockaddr_un linuxAddress(const DarwinAddress& address, socklen_t size) {
    if (address.family != AF_UNIX)
        endRun("an address that is no path");
    const std::size_t room =
        std::min<std::size_t>(size, sizeof address) - offsetof(DarwinAddress, path);
    const std::string path(address.path.begin(),
                           std::find(address.path.begin(),
                                     address.path.begin() + static_cast<std::ptrdiff_t>(room),
                                     '\0'));
    sockaddr_un translated{.sun_family = AF_UNIX, .sun_path = {}};
    placeOf(path).copy(translated.sun_path, sizeof translated.sun_path - 1);
    return translated;
}

template<auto Function>
int withAddress(int socket, const DarwinAddress* address, socklen_t size) {
    const sockaddr_un translated = linuxAddress(*address, size);
    return keepError(
        Function(socket, reinterpret_cast<const sockaddr*>(&translated), sizeof translated));
}

int makeSocket(int family, int kind, int protocol) {
    if (family != AF_UNIX || kind != SOCK_STREAM)
        endRun("a socket that is no stream within this machine");
    return keepError(::socket(family, kind, protocol));
}

/// The peers' addresses have no path: no client binds its own.
int acceptNext(int socket, DarwinAddress* from, socklen_t* size) {
    if (from != nullptr && size != nullptr && *size >= 2) {
        *size = offsetof(DarwinAddress, path);
        from->size = static_cast<std::uint8_t>(*size);
        from->family = AF_UNIX;
    }
    return keepError(::accept(socket, nullptr, nullptr));
}

/// Takes what our sockets ask for. No call of these shims sends a SIGPIPE in any case.
int setOption(int socket, int level, int option, const DarwinTime* value, socklen_t /*size*/) {
    if (level == darwinSocketLevel && option == darwinNoSignal)
        return 0;
    if (level != darwinSocketLevel || option != darwinReadPatience)
        endRun("a socket's option that has no case: " + std::to_string(option));
    const timeval patience{.tv_sec = value->seconds, .tv_usec = value->microseconds};
    return keepError(::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience));
}

/// Returns what the peer was when it connected, on both systems.
std::optional<ucred> peerOf(int socket) {
    ucred credentials{};
    socklen_t size = sizeof credentials;
    if (keepError(::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size)) != 0)
        return std::nullopt;
    return credentials;
}

int readOption(int socket, int level, int option, int* value, socklen_t* size) {
    if (level == darwinLocalLevel && option == darwinPeerProcess) {
        const auto credentials = peerOf(socket);
        *value = credentials ? credentials->pid : 0;
        return credentials ? 0 : -1;
    }
    if (level != darwinSocketLevel || option != darwinErrorOption)
        endRun("a socket's option that has no case: " + std::to_string(option));
    const int result = ::getsockopt(socket, SOL_SOCKET, SO_ERROR, value, size);
    if (result == 0)
        *value = darwinErrorOf(*value);
    return keepError(result);
}

ssize_t receive(int socket, void* to, std::size_t size, int flags) {
    if (flags != 0)
        endRun("flags of recv that have no case");
    return keepError(::recv(socket, to, size, 0));
}

ssize_t send(int socket, const void* from, std::size_t size, int flags) {
    if (flags != 0)
        endRun("flags of send that have no case");
    return keepError(::send(socket, from, size, MSG_NOSIGNAL));
}

/// getpeereid(3).
int peer(int socket, uid_t* user, gid_t* group) {
    const auto credentials = peerOf(socket);
    if (!credentials)
        return -1;
    *user = credentials->uid == ::getuid() ? emulatedUser() : credentials->uid;
    *group = credentials->gid;
    return 0;
}

constexpr auto shims = std::to_array<Shim>({
    {"_accept", address<acceptNext>},
    {"_bind", address<withAddress<::bind>>},
    {"_connect", address<withAddress<::connect>>},
    {"_getpeereid", address<peer>},
    {"_getsockopt", address<readOption>},
    {"_listen", address<Translated<::listen>::call>},
    {"_recv", address<receive>},
    {"_send", address<send>},
    {"_setsockopt", address<setOption>},
    {"_shutdown", address<Translated<::shutdown>::call>},
    {"_socket", address<makeSocket>},
    {"_writev", address<Translated<::writev>::call>},
});

} // namespace

Shims systemSocketShims() {
    return shims;
}

} // namespace velmo
