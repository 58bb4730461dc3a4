#pragma once

#include <cstddef>

namespace velmo {

/// Called first in `main`. Makes sure that the standard descriptors are open, so that no file of
/// ours lands on their numbers; that a reader who went away does not kill the process (SIGPIPE);
/// and that children can be waited for, whatever dispositions were inherited.
void prepareProcess();

/// Raises the soft limit on open descriptors to this number where the hard limit allows.
void allowDescriptors(std::size_t count);

} // namespace velmo
