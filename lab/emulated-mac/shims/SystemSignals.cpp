/// libSystem's signals (<signal.h>, XNU's <sys/signal.h>).

#include "lab/emulated-mac/shims/Darwin.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/ObjectiveC.h"
#include "lab/emulated-mac/shims/Process.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace velmo {

namespace {

constexpr int signalCount = 32;

/// The part of Darwin's siginfo_t that tells about the sender.
struct DarwinInfo {
    int signal;
    int error;
    int code;
    pid_t process;
    uid_t user;
    int rest[21];
};

static_assert(sizeof(DarwinInfo) == 104);

/// XNU takes the program that writes a key to a terminal's other side for the sender of the key's
/// signal (ptcwrite in bsd/kern/tty_dev.c), and this process did not start itself.
pid_t senderOf(const siginfo_t& info) {
    return info.si_code == SI_KERNEL ? ::getppid() : info.si_pid;
}

using Handler = void (*)(int signal, DarwinInfo* info, void* context);

struct DarwinAction {
    Handler handler;
    std::uint32_t mask;
    std::int32_t flags;
};

constexpr std::int32_t darwinRestart = 0x2;

Handler plain(void (*handler)(int)) {
    return reinterpret_cast<Handler>(reinterpret_cast<void*>(handler));
}

/// The watched signals, and the dispositions that the process asked for, by Darwin's numbers. Linux
/// drops an ignored signal before any watcher sees it, so a watched signal always has a handler of
/// ours.
struct Table {
    std::mutex mutex;
    std::map<int, std::vector<std::function<void()>>> watchers;
    std::array<DarwinAction, signalCount> actions{};
};

/// A process is born with its signals ignored or at their default.
Table* readTable() {
    auto* const made = new Table;
    for (int signal = 1; signal < signalCount; ++signal) {
        struct sigaction action{};
        if (::sigaction(linuxSignalOf(signal), nullptr, &action) == 0
            && action.sa_handler == SIG_IGN)
            made->actions.at(static_cast<std::size_t>(signal)).handler = plain(SIG_IGN);
    }
    return made;
}

Table& table() {
    static auto& made = *readTable();
    return made;
}

std::array<int, 2> watchersPipe{};

void arrived(int linuxSignal, siginfo_t* info, void* /*context*/) {
    const int error = errno;
    const int signal = darwinSignalOf(linuxSignal);
    static_cast<void>(!::write(watchersPipe[1], &signal, sizeof signal));
    const DarwinAction& action = table().actions.at(static_cast<std::size_t>(signal));
    if (action.handler == plain(SIG_DFL) && linuxSignal != SIGUSR2 && linuxSignal != SIGCHLD) {
        static_cast<void>(::signal(linuxSignal, SIG_DFL));
        ::raise(linuxSignal);
    } else if (action.handler != plain(SIG_DFL) && action.handler != plain(SIG_IGN)) {
        // No code but that of a child's end comes with a signal (sendsig in bsd/dev/arm).
        DarwinInfo told{.signal = signal,
                        .error = 0,
                        .code = 0,
                        .process = senderOf(*info),
                        .user = info->si_uid,
                        .rest = {}};
        action.handler(signal, &told, nullptr);
    }
    errno = error;
}

[[noreturn]] void callWatchers() {
    int signal = 0;
    while (::read(watchersPipe[0], &signal, sizeof signal) == sizeof signal) {
        std::vector<std::function<void()>> watchers;
        {
            const std::lock_guard lock(table().mutex);
            watchers = table().watchers[signal];
        }
        for (const auto& watcher : watchers)
            watcher();
    }
    endRun("the pipe of signals is broken");
}

void startWatching() {
    if (::pipe2(watchersPipe.data(), O_CLOEXEC) != 0)
        endRun("no pipe for signals");
    std::thread(callWatchers).detach();
}

int install(int signal, std::int32_t flags) {
    static std::once_flag once;
    std::call_once(once, startWatching);
    struct sigaction action{};
    action.sa_sigaction = arrived;
    action.sa_flags = SA_SIGINFO | ((flags & darwinRestart) != 0 ? SA_RESTART : 0);
    return keepError(::sigaction(linuxSignalOf(signal), &action, nullptr));
}

int setAction(int signal, const DarwinAction* wanted, DarwinAction* before) {
    const std::lock_guard lock(table().mutex);
    DarwinAction& kept = table().actions.at(static_cast<std::size_t>(signal));
    if (before != nullptr)
        *before = kept;
    if (wanted == nullptr)
        return 0;
    kept = *wanted;
    const bool isPlain = kept.handler == plain(SIG_DFL) || kept.handler == plain(SIG_IGN);
    if (!isPlain || table().watchers.contains(signal))
        return install(signal, kept.flags);
    struct sigaction action{};
    action.sa_handler = kept.handler == plain(SIG_DFL) ? SIG_DFL : SIG_IGN;
    return keepError(::sigaction(linuxSignalOf(signal), &action, nullptr));
}

Handler setSignal(int signal, Handler handler) {
    note("signal " + std::to_string(signal)
         + (handler == plain(SIG_IGN)   ? " is ignored"
            : handler == plain(SIG_DFL) ? " has its default"
                                        : " has a handler"));
    const DarwinAction wanted{.handler = handler, .mask = 0, .flags = darwinRestart};
    DarwinAction before{};
    setAction(signal, &wanted, &before);
    return before.handler;
}

/// A Darwin set has bit n - 1 for signal n.
constexpr std::uint32_t bitOf(int signal) {
    return 1U << (signal - 1);
}

/// Changes the mask. Darwin's numbers for block, unblock and set are 1, 2 and 3, one more than
/// Linux's.
int setMask(int how, const std::uint32_t* wanted, std::uint32_t* before) {
    sigset_t set;
    sigset_t old;
    sigemptyset(&set);
    for (int signal = 1; wanted != nullptr && signal < signalCount; ++signal) {
        if ((*wanted & bitOf(signal)) != 0)
            sigaddset(&set, linuxSignalOf(signal));
    }
    const int error = ::pthread_sigmask(how - 1, wanted == nullptr ? nullptr : &set, &old);
    if (before != nullptr) {
        *before = 0;
        for (int signal = 1; signal < signalCount; ++signal)
            *before |= sigismember(&old, linuxSignalOf(signal)) == 1 ? bitOf(signal) : 0;
    }
    return darwinErrorOf(error);
}

int sendSignal(pid_t process, int signal) {
    return keepError(::kill(process, linuxSignalOf(signal)));
}

int sendToGroup(pid_t group, int signal) {
    return keepError(::killpg(group, linuxSignalOf(signal)));
}

int raiseSignal(int signal) {
    return keepError(::raise(linuxSignalOf(signal)));
}

constexpr auto shims = std::to_array<Shim>({
    {"_kill", address<sendSignal>},
    {"_killpg", address<sendToGroup>},
    {"_pthread_sigmask", address<setMask>},
    {"_raise", address<raiseSignal>},
    {"_sigaction", address<setAction>},
    {"_signal", address<setSignal>},
    {"_sigprocmask", address<setMask>},
});

} // namespace

void watchSignal(int signal, std::function<void()> handler) {
    const std::lock_guard lock(table().mutex);
    table().watchers[signal].push_back(std::move(handler));
    install(signal, darwinRestart);
}

void watchForLedgerRequests() {
    watchSignal(darwinSignalOf(SIGUSR2), [] { note("alive:" + objectLedger()); });
}

Shims systemSignalShims() {
    return shims;
}

} // namespace velmo
