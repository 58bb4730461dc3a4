#include "platform/sessions/PseudoTerminal.h"

#include "core/support/PathText.h"
#include "core/support/Text.h"
#include "platform/posix/CStrings.h"
#include "platform/posix/Io.h"
#include "platform/posix/Pipe.h"
#include "platform/sessions/SessionProcesses.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

namespace velmo {

namespace {

constexpr int cannotExecute = 127;

struct TerminalPair {
    Descriptor master;
    Descriptor slave;
};

Descriptor openNoControl(const char* path) {
    return Descriptor(
        retryInterrupted([&] { return ::open(path, O_RDWR | O_NOCTTY | O_CLOEXEC); }));
}

/// Tries again after ENXIO, which XNU answers if another process opens a terminal at the same time
/// (ptmx_get_ioctl in bsd/kern/tty_ptmx.c), and also if no more terminals may be opened.
Descriptor openMaster() {
    constexpr int tries = 5;
    for (int i = 0; i < tries; ++i) {
        Descriptor master(::posix_openpt(O_RDWR | O_NOCTTY));
        if (master || errno != ENXIO)
            return master;
    }
    return {};
}

std::optional<TerminalPair> makeTerminal(PtyFrame::Size size) {
    TerminalPair pair{.master = openMaster(), .slave = {}};
    if (!pair.master || ::fcntl(pair.master.get(), F_SETFD, FD_CLOEXEC) != 0
        || ::grantpt(pair.master.get()) != 0 || ::unlockpt(pair.master.get()) != 0)
        return std::nullopt;
    // Only one thread of this process makes terminals, so no other call changes the name meanwhile.
    const char* const name = ::ptsname(pair.master.get()); // NOLINT(concurrency-mt-unsafe)
    if (name == nullptr)
        return std::nullopt;
    pair.slave = openNoControl(name);
    termios modes{};
    if (!pair.slave || ::tcgetattr(pair.slave.get(), &modes) != 0)
        return std::nullopt;
    modes.c_iflag |= IUTF8; // a backspace takes away a whole character
    ::tcsetattr(pair.slave.get(), TCSANOW, &modes);
    setWindowSize(pair.slave.get(), size);
    return pair;
}

std::vector<std::string> wordsOf(const SpawnRequest& request) {
    std::vector<std::string> words = request.argv;
    const std::string_view name = PathText::lastComponent(words.front());
    if (Text::isOneOf(name, Pty::shells) && name != "tmux")
        words.front() = "-" + std::string(name);
    return words;
}

std::vector<std::string> entriesOf(const Pty::Environment& environment) {
    std::vector<std::string> entries;
    for (const auto& [key, value] : environment)
        entries.emplace_back(key).append("=").append(value);
    return entries;
}

void useDefaultSignals() {
    for (int signal = 1; signal < NSIG; ++signal)
        static_cast<void>(std::signal(signal, SIG_DFL));
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// Turns a child into the program, between fork and exec, where it must not allocate memory. After
/// a failure, writes a byte to `report` and ends the child.
[[noreturn]] void becomeProgram(int slave, int report, const char* folder, const char* program,
                                char* const* argv, char* const* environment,
                                const rlimit& openFiles) {
    constexpr int reportCopy = STDERR_FILENO + 1;
    useDefaultSignals();
    // Both are copied beyond the standard numbers first, since either may have one of those.
    const int terminal = ::fcntl(slave, F_DUPFD, reportCopy + 1);
    const int pipe = ::fcntl(report, F_DUPFD, reportCopy + 1);
    const bool ready = ::setsid() >= 0 && ::ioctl(terminal, TIOCSCTTY, 0) == 0
                       && ::dup2(terminal, STDIN_FILENO) >= 0
                       && ::dup2(terminal, STDOUT_FILENO) >= 0
                       && ::dup2(terminal, STDERR_FILENO) >= 0 && ::dup2(pipe, reportCopy) >= 0
                       && ::fcntl(reportCopy, F_SETFD, FD_CLOEXEC) == 0;
    closeDescriptorsFrom(reportCopy + 1);
    ::setrlimit(RLIMIT_NOFILE, &openFiles);
    if (ready && ::chdir(folder) == 0)
        ::execve(program, argv, environment);
    const char failed = 1;
    static_cast<void>(::write(reportCopy, &failed, sizeof failed) == 1);
    ::_exit(cannotExecute);
}

} // namespace

std::optional<StartedProgram> startOnPseudoTerminal(const SpawnRequest& request,
                                                    const Pty::Environment& environment,
                                                    const rlimit& openFiles) {
    auto terminal = makeTerminal({.cols = request.cols, .rows = request.rows});
    auto failure = makePipe();
    if (!terminal || !failure)
        return std::nullopt;
    const CStrings argv(wordsOf(request));
    const CStrings variables(entriesOf(environment));
    const pid_t child = ::fork();
    if (child < 0)
        return std::nullopt;
    if (child == 0)
        becomeProgram(terminal->slave.get(), failure->writeEnd.get(), request.cwd.c_str(),
                      request.program.c_str(), argv.get(), variables.get(), openFiles);
    failure->writeEnd.reset();
    char failed = 0;
    if (retryInterrupted([&] { return ::read(failure->readEnd.get(), &failed, 1); }) != 0) {
        retryInterrupted([&] { return ::waitpid(child, nullptr, 0); });
        return std::nullopt;
    }
    return StartedProgram{.terminal = std::move(terminal->master), .process = child};
}

void setWindowSize(int terminal, PtyFrame::Size size) {
    winsize window{};
    window.ws_col = static_cast<unsigned short>(size.cols);
    window.ws_row = static_cast<unsigned short>(size.rows);
    ::ioctl(terminal, TIOCSWINSZ, &window);
}

std::optional<PtyFrame::Size> windowSize(int terminal) {
    winsize window{};
    if (::ioctl(terminal, TIOCGWINSZ, &window) != 0 || window.ws_col == 0 || window.ws_row == 0)
        return std::nullopt;
    return PtyFrame::Size{.cols = window.ws_col, .rows = window.ws_row};
}

void signalForegroundJob(int terminal, pid_t leader, int signal) {
    const pid_t group = ::tcgetpgrp(terminal);
    ::killpg(group > 1 ? group : leader, signal);
}

bool signalSession(int terminal, pid_t leader, int signal) {
    std::set<pid_t> groups = processGroupsOf(leader);
    if (const pid_t foreground = ::tcgetpgrp(terminal); foreground > 1)
        groups.insert(foreground);
    for (const pid_t group : groups)
        ::killpg(group, signal);
    return !groups.empty();
}

} // namespace velmo
