#pragma once

#include <sys/types.h>

#include <optional>

namespace velmo {

/// Returns the effective user id under which the process at the other end of a Unix-domain socket
/// opened it. The kernel vouches for it. Absent if the socket has no other end.
std::optional<uid_t> peerUser(int socket);

} // namespace velmo
