#pragma once

#include <string_view>

namespace velmo {

/// Writes the whole line, and waits for a reader who takes his time. The first call of the system
/// gets all of it, so that short lines of several processes do not mix. Once the reader is gone,
/// the rest is dropped: nobody is left to be told.
void writeStandardOutput(std::string_view line);

// These never wait, and drop what would have to: a display that is drawn anew has a newer text by
// then, and a log with a full pipe or a stopped terminal behind it must not keep the daemon from
// putting the setting back.
void offerStandardOutput(std::string_view text);
void writeStandardError(std::string_view line);

} // namespace velmo
