#include "tools/velmo-session/SignalPipe.h"

#include "platform/posix/Pipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace velmo::SignalPipe {

namespace {

Pipe ends; // of the whole process: a handler has nothing else to go by

void note(int signal) {
    const int before = errno;
    const auto byte = static_cast<unsigned char>(signal);
    static_cast<void>(::write(ends.writeEnd.get(), &byte, 1) == 1);
    errno = before;
}

} // namespace

std::optional<int> catchSignals(std::initializer_list<int> signals) {
    auto made = makePipe();
    if (!made)
        return std::nullopt;
    ends = *std::move(made);
    ::fcntl(ends.writeEnd.get(), F_SETFL, O_NONBLOCK);
    ::fcntl(ends.readEnd.get(), F_SETFL, O_NONBLOCK);
    for (const int signal : signals) {
        struct sigaction action{};
        action.sa_handler = note;
        ::sigaction(signal, &action, nullptr);
    }
    return ends.readEnd.get();
}

std::optional<int> next(int descriptor) {
    unsigned char byte = 0;
    if (::read(descriptor, &byte, 1) != 1)
        return std::nullopt;
    return byte;
}

} // namespace velmo::SignalPipe
