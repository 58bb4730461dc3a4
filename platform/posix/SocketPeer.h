#pragma once

#include <sys/types.h>

#include <optional>

/// Facts about the process at the other end of a Unix-domain socket, for which the kernel vouches.
/// Absent if the socket has no other end.
namespace velmo {

/// Returns the effective user id under which the process opened the socket.
std::optional<uid_t> peerUser(int socket);

/// Returns the process id.
std::optional<pid_t> peerProcess(int socket);

} // namespace velmo
