#include "platform/posix/ProcessSetup.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

namespace velmo {

void unblockSignal(int signal) {
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
}

void prepareProcess() {
    // open returns the lowest free number, so this fills exactly the standard ones that are closed.
    int descriptor = ::open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDWR);
    if (descriptor >= 0)
        ::close(descriptor);
    // These can't fail, since both signals exist.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGCHLD, SIG_DFL));
    unblockSignal(SIGCHLD);
}

std::vector<int> endingSignals() {
    std::vector<int> signals{SIGTERM};
    for (const int signal : {SIGINT, SIGHUP}) {
        struct sigaction action{};
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
            signals.push_back(signal);
    }
    return signals;
}

void allowDescriptors(std::size_t count) {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= count)
        return;
    limit.rlim_cur = std::min<rlim_t>(count, limit.rlim_max);
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace velmo
