#pragma once

#include "platform/client/Installation.h"

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace velmo {

inline constexpr uid_t rootUser = 0;

/// Looks at a path without following a link at its end. It is safe if it belongs to `owner`, or to
/// root, and neither group nor others may write to it.
Installation::Place placeOnDisk(const std::string& path, uid_t owner);

/// Returns the last lines of a text file, of its last 4 KiB at most; none if it can't be read.
std::vector<std::string> lastLines(const std::string& path, std::size_t count);

} // namespace velmo
