#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>

namespace velmo {

/// The length limit of a Unix-domain socket's path in bytes: 103 on a Mac, 107 on Linux.
inline constexpr std::size_t maxSocketPath = sizeof(sockaddr_un::sun_path) - 1;

/// Returns the address of the socket with that path; absent if the path is too long for a socket.
inline std::optional<sockaddr_un> socketAddress(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string text = path.string();
    if (text.size() > maxSocketPath)
        return std::nullopt;
    std::ranges::copy(text, address.sun_path);
    return address;
}

} // namespace velmo
