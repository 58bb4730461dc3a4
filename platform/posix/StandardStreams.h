#pragma once

#include <string_view>

namespace velmo {

/// One write of the whole line, so that lines of several processes do not mix. What can't be
/// written (a pipe or terminal that was closed) is dropped: nobody is left to be told.
void writeStandardOutput(std::string_view line);

/// The same without ever waiting for a reader: with a full pipe or a stopped terminal behind it, a
/// log would keep the daemon from putting the setting back.
void writeStandardError(std::string_view line);

} // namespace velmo
