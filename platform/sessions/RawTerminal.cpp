#include "platform/sessions/RawTerminal.h"

#include "core/terminal/PtyAttach.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <utility>

namespace velmo {

namespace {

// Global, so that a signal handler can reach them.
termios saved{};
volatile sig_atomic_t savedDescriptor = -1;

constexpr auto crashes = std::to_array<int>({SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT});

void restore() {
    if (savedDescriptor >= 0)
        ::tcsetattr(savedDescriptor, TCSANOW, &saved);
}

bool setRaw() {
    termios raw = saved;
    ::cfmakeraw(&raw);
    return ::tcsetattr(savedDescriptor, TCSANOW, &raw) == 0;
}

void restoreAndCrash(int signal) {
    restore();
    static_cast<void>(::write(STDOUT_FILENO, PtyAttach::reset.data(), PtyAttach::reset.size())
                      == 0);
    static_cast<void>(std::signal(signal, SIG_DFL));
    static_cast<void>(std::raise(signal));
}

} // namespace

std::optional<RawTerminal> RawTerminal::enter(int descriptor) {
    if (::tcgetattr(descriptor, &saved) != 0)
        return std::nullopt;
    savedDescriptor = descriptor;
    for (const int crash : crashes)
        static_cast<void>(std::signal(crash, restoreAndCrash));
    if (!setRaw()) {
        savedDescriptor = -1;
        return std::nullopt;
    }
    return RawTerminal();
}

void RawTerminal::renew() const {
    if (isOwner_)
        setRaw();
}

RawTerminal::RawTerminal(RawTerminal&& other) noexcept
    : isOwner_(std::exchange(other.isOwner_, false)) {
}

RawTerminal::~RawTerminal() {
    if (!isOwner_)
        return;
    restore();
    savedDescriptor = -1;
    for (const int crash : crashes)
        static_cast<void>(std::signal(crash, SIG_DFL));
}

} // namespace velmo
