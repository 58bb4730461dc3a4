#pragma once

#include <sys/types.h>

#include <optional>

namespace velmo {

/// The effective user id under which the process at the other end of a Unix-domain socket opened
/// it, as the kernel vouches for it.
std::optional<uid_t> peerUser(int socket);

} // namespace velmo
