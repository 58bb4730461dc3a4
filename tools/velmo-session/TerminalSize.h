#pragma once

#include "core/terminal/PtyFrame.h"

namespace velmo {

/// Returns the size of the user's terminal, clamped to what the host accepts; 80 x 24 without a
/// terminal.
PtyFrame::Size terminalSize();

} // namespace velmo
