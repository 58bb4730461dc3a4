#include "lab/emulated-mac/shims/XpcWire.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>

namespace velmo {

bool sendWords(int socket, const Words& words) {
    std::string message;
    for (const std::string& word : words)
        message.append(word).push_back('\0');
    return ::send(socket, message.data(), message.size(), MSG_NOSIGNAL) >= 0;
}

std::optional<Words> receiveWords(int socket) {
    std::array<char, 65536> buffer{};
    const ssize_t size = ::recv(socket, buffer.data(), buffer.size(), 0);
    if (size <= 0)
        return std::nullopt;
    const std::string_view message(buffer.data(), static_cast<std::size_t>(size));
    Words words;
    for (std::size_t at = 0; at < message.size();) {
        const std::size_t end = std::min(message.find('\0', at), message.size());
        words.emplace_back(message.substr(at, end - at));
        at = end + 1;
    }
    return words;
}

int connectTo(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return -1;
    std::memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
    const int made = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (made >= 0
        && ::connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return made;
    ::close(made);
    return -1;
}

} // namespace velmo
