/// libSystem's event queues (<sys/event.h>, kqueue(2)), over epoll: as much as waits for
/// descriptors to become readable or writable, and for processes to end.

#include "lab/emulated-mac/shims/Darwin.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace velmo {

namespace {

struct Event {
    std::uintptr_t identity;
    std::int16_t filter;
    std::uint16_t flags;
    std::uint32_t filterFlags;
    std::intptr_t data;
    void* user;
};

enum Filter : std::int16_t { readable = -1, writable = -2, ofProcess = -5 };

enum Flag : std::uint16_t { add = 0x1, remove = 0x2, oneShot = 0x10, clear = 0x20, end = 0x8000 };

constexpr std::uint32_t exits = 0x80000000; // NOTE_EXIT

struct Watch {
    std::uint32_t events = 0; ///< epoll's
    void* readUser = nullptr;
    void* writeUser = nullptr;
    std::uintptr_t process = 0; ///< that a descriptor of this shim's own stands for
};

struct Queues {
    std::mutex mutex;
    std::map<int, std::map<int, Watch>> watches; ///< by queue and descriptor
};

Queues& queues() {
    static auto& made = *new Queues;
    return made;
}

int makeQueue() {
    return keepError(::epoll_create1(0));
}

/// Watches for the end of any process, which is reported once.
int watchProcess(int queue, const Event& event) {
    if ((event.flags & add) == 0 || event.filterFlags != exits)
        endRun("an event of a process that is not its end");
    const auto file = static_cast<int>(::syscall(SYS_pidfd_open, event.identity, 0));
    if (file < 0)
        return keepError(-1);
    const std::lock_guard lock(queues().mutex);
    queues().watches[queue][file] = {
        .events = EPOLLIN, .readUser = event.user, .process = event.identity};
    epoll_event wanted{.events = EPOLLIN | EPOLLONESHOT, .data = {.fd = file}};
    return keepError(::epoll_ctl(queue, EPOLL_CTL_ADD, file, &wanted));
}

int change(int queue, const Event& event) {
    if (event.filter == ofProcess)
        return watchProcess(queue, event);
    if (event.filter != readable && event.filter != writable)
        endRun("an event filter that has no case");
    const std::lock_guard lock(queues().mutex);
    const int file = static_cast<int>(event.identity);
    Watch& watch = queues().watches[queue][file];
    const std::uint32_t before = watch.events;
    const std::uint32_t bit = event.filter == readable ? EPOLLIN : EPOLLOUT;
    (event.filter == readable ? watch.readUser : watch.writeUser) = event.user;
    if ((event.flags & add) != 0)
        watch.events |= bit | ((event.flags & clear) != 0 ? EPOLLET : 0);
    if ((event.flags & remove) != 0)
        watch.events &= ~bit;
    epoll_event wanted{.events = watch.events, .data = {.fd = file}};
    const int operation = before == 0                      ? EPOLL_CTL_ADD
                          : (watch.events & ~EPOLLET) == 0 ? EPOLL_CTL_DEL
                                                           : EPOLL_CTL_MOD;
    if (operation == EPOLL_CTL_DEL)
        queues().watches[queue].erase(file);
    const int result = ::epoll_ctl(queue, operation, file, &wanted);
    // A descriptor that was closed has left the queue by itself, on both systems.
    if (result == -1 && operation == EPOLL_CTL_MOD && errno == ENOENT)
        return keepError(::epoll_ctl(queue, EPOLL_CTL_ADD, file, &wanted));
    return keepError(result);
}

int collect(int queue, const epoll_event& seen, Event* events, int count, int room) {
    const std::lock_guard lock(queues().mutex);
    const Watch& watch = queues().watches[queue][seen.data.fd];
    const auto give = [&](std::int16_t filter, void* user) {
        if (count < room)
            events[count++] = {.identity = static_cast<std::uintptr_t>(seen.data.fd),
                               .filter = filter,
                               .flags = clear,
                               .filterFlags = 0,
                               .data = 1,
                               .user = user};
    };
    if (watch.process != 0) {
        if (count < room)
            events[count++] = {.identity = watch.process,
                               .filter = ofProcess,
                               .flags = oneShot | end,
                               .filterFlags = exits,
                               .data = 0,
                               .user = watch.readUser};
        return count;
    }
    if ((seen.events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0 && (watch.events & EPOLLIN) != 0)
        give(readable, watch.readUser);
    if ((seen.events & (EPOLLOUT | EPOLLERR)) != 0 && (watch.events & EPOLLOUT) != 0)
        give(writable, watch.writeUser);
    return count;
}

int useQueue(int queue, const Event* changes, int changeCount, Event* events, int room,
             const timespec* patience) {
    for (int i = 0; i < changeCount; ++i) {
        if (change(queue, changes[i]) == -1)
            return -1;
    }
    if (room == 0)
        return 0;
    constexpr int forEver = -1;
    const int milliseconds =
        patience == nullptr
            ? forEver
            : static_cast<int>(patience->tv_sec * 1000 + (patience->tv_nsec + 999999) / 1000000);
    std::array<epoll_event, 64> seen{};
    const int found =
        keepError(::epoll_wait(queue, seen.data(), static_cast<int>(seen.size()), milliseconds));
    int count = 0;
    for (int i = 0; i < found; ++i)
        count = collect(queue, seen[static_cast<std::size_t>(i)], events, count, room);
    return found < 0 ? -1 : count;
}

constexpr std::uint64_t darwinNonBlocking = 0x8004667E; // FIONBIO, <sys/filio.h>

struct Request {
    std::uint64_t onDarwin; ///< XNU's <sys/ttycom.h>
    int onLinux;
};

/// What takes the same argument on both systems.
constexpr auto terminalRequests = std::to_array<Request>({
    {0x80087467, TIOCSWINSZ},
    {0x40087468, TIOCGWINSZ},
    {0x20007461, TIOCSCTTY},
});

bool isQueue(int file) {
    std::array<char, 32> target{};
    const auto length =
        ::readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), target.data(), target.size());
    return std::string_view(target.data(), length < 0 ? 0 : static_cast<std::size_t>(length))
           == "anon_inode:[eventpoll]";
}

/// A queue accepts no request at all (XNU's kern_event.c, kqueue_ioctl): it
/// can't be made non-blocking.
extern "C" int emulatedDeviceControl(int file, std::uint64_t request, int** rest) {
    for (const Request& each : terminalRequests) {
        if (each.onDarwin == request)
            return keepError(::ioctl(file, each.onLinux, *rest));
    }
    if (request != darwinNonBlocking)
        endRun("a request of ioctl that has no case");
    if (isQueue(file)) {
        errno = ENOTTY;
        return keepError(-1);
    }
    return keepError(::ioctl(file, FIONBIO, *rest));
}

VELMO_VARIADIC(variadicDeviceControl, 2, emulatedDeviceControl);

constexpr auto shims = std::to_array<Shim>({
    {"_ioctl", address<variadicDeviceControl>},
    {"_kevent", address<useQueue>},
    {"_kqueue", address<makeQueue>},
});

} // namespace

Shims systemEventShims() {
    return shims;
}

} // namespace velmo
