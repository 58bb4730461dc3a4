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

} // namespace velmo
