#include "platform/posix/ProcessEnd.h"

#include <fcntl.h>
#include <sys/event.h>

#include <cstdint>
#include <ctime>

namespace velmo {

// NOTE_EXIT of kqueue(2) tells of any process, and not only of a child.
Descriptor processEnd(pid_t process) {
    Descriptor queue(::kqueue());
    if (!queue)
        return {};
    ::fcntl(queue.get(), F_SETFD, FD_CLOEXEC);
    struct kevent change{};
    EV_SET(&change, static_cast<std::uintptr_t>(process), EVFILT_PROC, EV_ADD | EV_ONESHOT,
           NOTE_EXIT, 0, nullptr);
    if (::kevent(queue.get(), &change, 1, nullptr, 0, nullptr) != 0)
        return {};
    return queue;
}

bool hasEnded(const Descriptor& processEnd) {
    struct kevent event{};
    const timespec now{};
    return ::kevent(processEnd.get(), nullptr, 0, &event, 1, &now) == 1;
}

} // namespace velmo
