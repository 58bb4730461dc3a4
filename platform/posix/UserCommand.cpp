#include "platform/posix/UserCommand.h"

#include "platform/posix/CStrings.h"
#include "platform/posix/Io.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/ProcessSetup.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace velmo {

namespace {

constexpr int execFailed = 127;

/// Forks with all signals blocked. A signal that reached the child before its dispositions are set
/// would otherwise run this process's handlers there. The child unblocks the signals itself.
pid_t forkWithSignalsBlocked() {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = ::fork();
    if (child != 0)
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return child;
}

/// Turns the child into the program, or sends the parent the errno that says why it can't.
[[noreturn]] void becomeCommand(char* const* words, const ProcessBirth& birth,
                                std::optional<int> handedOn, int news) {
    birth.restore();
    if (handedOn)
        ::fcntl(*handedOn, F_SETFD, 0);
    ::execvp(words[0], words);
    const int error = errno;
    // The parent reads this; it takes an end of the pipe without an errno for success.
    static_cast<void>(::write(news, &error, sizeof error) == sizeof error);
    ::_exit(execFailed);
}

} // namespace

std::expected<pid_t, int> startCommand(const std::vector<std::string>& words,
                                       const ProcessBirth& birth, std::optional<int> handedOn) {
    const CStrings argv(words);
    // The write end closes when the child becomes the program, and carries errno if it can't. Both
    // ends have numbers beyond the standard ones, which are all open here.
    auto news = makePipe();
    if (!news)
        return std::unexpected(errno);
    birth.keepLaterDescriptors();
    const pid_t child = forkWithSignalsBlocked();
    if (child < 0)
        return std::unexpected(errno);
    if (child == 0)
        becomeCommand(argv.get(), birth, handedOn, news->writeEnd.get());
    news->writeEnd.reset();
    int error = 0;
    const auto size =
        retryInterrupted([&] { return ::read(news->readEnd.get(), &error, sizeof error); });
    if (size != sizeof error)
        return child;
    retryInterrupted([&] { return ::waitpid(child, nullptr, 0); });
    return std::unexpected(error);
}

void endBySignal(int signal) {
    const rlimit none{.rlim_cur = 0, .rlim_max = 0};
    ::setrlimit(RLIMIT_CORE, &none);
    raiseByDefault(signal);
}

void raiseByDefault(int signal) {
    struct sigaction action{};
    action.sa_handler = SIG_DFL;
    ::sigaction(signal, &action, nullptr);
    ::raise(signal);
    unblockSignal(signal);
}

} // namespace velmo
