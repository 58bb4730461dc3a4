#include "platform/posix/SignalSender.h"

#include "platform/posix/Descriptor.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cstddef>

namespace velmo {

namespace {

/// Tells whether a key of this terminal sends the signal.
bool isOfKey(const termios& settings, int signal) {
    const auto hasKey = [&](std::size_t index) { return settings.c_cc[index] != _POSIX_VDISABLE; };
    if ((settings.c_lflag & ISIG) == 0)
        return false;
    switch (signal) {
    case SIGINT:
        return hasKey(VINTR);
    case SIGQUIT:
        return hasKey(VQUIT);
    case SIGTSTP:
        return hasKey(VSUSP);
    default:
        return false;
    }
}

} // namespace

// Nothing in the signal tells: XNU leaves si_code 0 (sendsig in bsd/kern/kern_sig.c), and takes the
// program that writes a key to the terminal's other side for the sender, since ptcwrite handles the
// key in that program's name (bsd/kern/tty_dev.c). So a signal counts as the terminal's if a key
// could have sent it to this process's group.
bool isFromTerminal(const siginfo_t& info) {
    const Descriptor terminal(::open("/dev/tty", O_RDONLY | O_NOCTTY | O_CLOEXEC));
    termios settings{};
    return terminal && ::tcgetpgrp(terminal.get()) == ::getpgrp()
           && ::tcgetattr(terminal.get(), &settings) == 0 && isOfKey(settings, info.si_signo);
}

} // namespace velmo
