#pragma once

#include <string_view>

namespace velmo {

/// Writes the whole line, and waits for a slow reader. The first system call gets the whole line,
/// so that short lines of several processes do not mix. Returns false, and drops the rest, if the
/// reader is gone or the disk is full.
bool writeStandardOutput(std::string_view line);

// These never wait, and drop a text that would have to. A display that is drawn anew has a newer
// text by then, and a log on a full pipe or a stopped terminal must not keep the daemon from
// putting the setting back.
void offerStandardOutput(std::string_view text);
void writeStandardError(std::string_view line);

} // namespace velmo
