#pragma once

#include <sys/types.h>

#include <optional>

/// Tells of the process at the other end of a Unix-domain socket. The kernel vouches for it. Absent
/// if the socket has no other end.
namespace velmo {

/// Returns the effective user id under which it opened the socket.
std::optional<uid_t> peerUser(int socket);

/// Returns its process id.
std::optional<pid_t> peerProcess(int socket);

} // namespace velmo
