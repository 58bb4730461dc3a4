#pragma once

#include "platform/posix/Descriptor.h"

#include <sys/types.h>

namespace velmo {

/// Returns a descriptor that becomes readable when the process ends, whoever's it is; none if there
/// is no such process, or the system can't tell (errno says which: ESRCH for no process).
Descriptor processEnd(pid_t process);

} // namespace velmo
