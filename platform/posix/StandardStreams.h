#pragma once

#include <string_view>

namespace velmo {

/// Writes the line in one call, so that lines of several processes do not mix. What can't be
/// written (to a pipe or terminal that was closed) is dropped: nobody is left to be told.
void writeStandardOutput(std::string_view line);

/// Does the same without ever waiting for a reader, and drops what would have to wait: a log with a
/// full pipe or a stopped terminal behind it must not keep the daemon from putting the setting
/// back.
void writeStandardError(std::string_view line);

} // namespace velmo
