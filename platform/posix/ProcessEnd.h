#pragma once

#include "platform/posix/Descriptor.h"

#include <sys/types.h>

namespace velmo {

/// Returns a descriptor by which `hasEnded` tells of the process, which may be any user's. The
/// descriptor is empty if the process does not exist, with errno ESRCH, or if the system can't tell
/// of it, with another errno. Only `hasEnded` may use it: on a Mac the descriptor can't be made
/// non-blocking, as an Asio object would need.
Descriptor processEnd(pid_t process);

/// Tells, without waiting, whether the process has ended. Some systems tell it only once.
bool hasEnded(const Descriptor& processEnd);

} // namespace velmo
