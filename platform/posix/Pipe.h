#pragma once

#include "platform/posix/Descriptor.h"

#include <optional>

namespace velmo {

/// Both ends close themselves and are closed in children.
struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

/// Absent when there are no descriptors left, with errno set.
std::optional<Pipe> makePipe();

} // namespace velmo
