#include "platform/posix/Pipe.h"

#include <fcntl.h>
#include <unistd.h>

namespace velmo {

std::optional<Pipe> makePipe() {
    int ends[2];
    if (::pipe(ends) != 0)
        return std::nullopt;
    Pipe pipe{.readEnd = Descriptor(ends[0]), .writeEnd = Descriptor(ends[1])};
    // macOS lacks pipe2. A child that another thread starts in between closes them by itself.
    if (::fcntl(ends[0], F_SETFD, FD_CLOEXEC) != 0 || ::fcntl(ends[1], F_SETFD, FD_CLOEXEC) != 0)
        return std::nullopt;
    return pipe;
}

} // namespace velmo
