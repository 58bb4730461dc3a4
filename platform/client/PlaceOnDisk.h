#pragma once

#include "platform/client/Installation.h"

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmo {

inline constexpr uid_t rootUser = 0;

/// Looks at a path without following a link at its end. The place is safe if it is not a link,
/// belongs to `owner` or to root, and neither group nor others may write to it.
Installation::Place placeOnDisk(const std::string& path, uid_t owner);

/// Tells whether there is anything at a path, be it a link that leads nowhere. Absent if the system
/// does not let this process see it.
std::optional<bool> isOnDisk(const std::string& path);

/// Returns up to `count` lines from the end of a text file, out of its last 4 KiB. Empty if the
/// path is a link, or not a regular file that can be read.
std::vector<std::string> lastLines(const std::string& path, std::size_t count);

} // namespace velmo
