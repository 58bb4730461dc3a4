#pragma once

#include "platform/posix/Descriptor.h"

#include <sys/types.h>

namespace velmo {

/// Returns a descriptor by which `hasEnded` tells of the process, whoever's it is; none if there is
/// no such process, or the system can't tell (errno says which: ESRCH for no process). Only
/// `hasEnded` may use it: a Mac's can't be made non-blocking, so that no Asio object waits for it.
Descriptor processEnd(pid_t process);

/// Tells, without waiting, whether the process has ended. A system may tell it once only.
bool hasEnded(const Descriptor& processEnd);

} // namespace velmo
