#pragma once

#include "platform/posix/Descriptor.h"

#include <optional>

namespace velmo {

/// The two ends of a pipe. Neither is inherited by a program that this process starts.
struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

/// Makes a pipe; absent if the system has no descriptors left, with errno set.
std::optional<Pipe> makePipe();

/// Returns whether every read end of the pipe is closed, so that nothing written arrives any more.
bool isReaderGone(int writeEnd);

} // namespace velmo
