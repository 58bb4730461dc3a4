#include "platform/posix/SignalSender.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

namespace velmo {
namespace {

/// Returns what the work returns in a child process.
bool inChild(const std::function<bool()>& work) {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(work() ? 1 : 0);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status) == 1;
}

bool answer(int signal) {
    siginfo_t info{};
    info.si_signo = signal;
    info.si_pid = 1; // the program that shows the terminal
    return isFromTerminal(info);
}

using Change = std::function<void(termios&)>;

/// Returns the answer of a process that leads a terminal's session, or of a child of it.
bool answerOnTerminal(int signal, const Change& change, bool inBackground) {
    int terminal = -1;
    int other = -1;
    EXPECT_EQ(::openpty(&terminal, &other, nullptr, nullptr, nullptr), 0);
    const bool is = inChild([&] {
        termios settings{};
        const bool ready = ::login_tty(other) == 0 && ::tcgetattr(STDIN_FILENO, &settings) == 0;
        change(settings);
        ::tcsetattr(STDIN_FILENO, TCSANOW, &settings);
        const auto ask = [&] { return (!inBackground || ::setpgid(0, 0) == 0) && answer(signal); };
        return ready && inChild(ask);
    });
    ::close(terminal);
    ::close(other);
    return is;
}

Change without(std::size_t key) {
    return [key](termios& settings) { settings.c_cc[key] = _POSIX_VDISABLE; };
}

void unchanged(termios& /*settings*/) {
}

TEST(SignalSenderOfMac, IsTheTerminalWhereAKeyMayHaveSentTheSignal) {
    const Change raw = [](termios& settings) { settings.c_lflag &= ~static_cast<tcflag_t>(ISIG); };

    struct Row {
        const char* what;
        int signal;
        Change change;
        bool inBackground;
        bool isFromTerminal;
    };

    for (const Row& row : {Row{"Ctrl-C", SIGINT, unchanged, false, true},
                           {"Ctrl-\\", SIGQUIT, unchanged, false, true},
                           {"Ctrl-Z", SIGTSTP, unchanged, false, true},
                           {"no key sends it", SIGTERM, unchanged, false, false},
                           {"no key sends a hang-up", SIGHUP, unchanged, false, false},
                           {"keys send no signals", SIGINT, raw, false, false},
                           {"this key sends none", SIGINT, without(VINTR), false, false},
                           {"this key sends none", SIGQUIT, without(VQUIT), false, false},
                           {"this key sends none", SIGTSTP, without(VSUSP), false, false},
                           {"another key sends none", SIGINT, without(VQUIT), false, true},
                           {"the group is in the background", SIGINT, unchanged, true, false}})
        EXPECT_EQ(answerOnTerminal(row.signal, row.change, row.inBackground), row.isFromTerminal)
            << row.what << ", signal " << row.signal;
}

TEST(SignalSenderOfMac, IsAProcessWhereThereIsNoTerminal) {
    EXPECT_FALSE(inChild([] { return ::setsid() > 0 && answer(SIGINT); }));
}

} // namespace
} // namespace velmo
