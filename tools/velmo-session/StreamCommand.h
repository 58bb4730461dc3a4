#pragma once

#include <string>

namespace velmo {

/// Relays the frames of a session (core/terminal/PtyFrame.h) over standard input and output until
/// the session ends or either side goes away. A view-only one passes nothing on to the program.
/// Returns the exit status.
int stream(const std::string& session, bool isViewOnly);

} // namespace velmo
