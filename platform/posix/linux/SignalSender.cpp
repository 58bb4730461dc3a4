#include "platform/posix/SignalSender.h"

namespace velmo {

// The kernel's own signals have SI_KERNEL or no sender.
bool isFromTerminal(const siginfo_t& info) {
    return info.si_code != SI_USER && info.si_code != SI_QUEUE && info.si_pid == 0;
}

} // namespace velmo
