#pragma once

#include "core/clipboard/FinderSelectionParse.h"

#include <optional>
#include <string_view>

namespace velmo::FinderSelectionParse {

/// Returns the identity that lstat(2) gives: that of the link itself if the path is a link. Absent
/// if the path names nothing or can't be examined. A device number shorter than 64 bits is read as
/// unsigned, as the system's own tools print it.
std::optional<FileIdentity> lstatIdentity(std::string_view path);

} // namespace velmo::FinderSelectionParse
