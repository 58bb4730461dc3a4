#pragma once

#include "core/terminal/PtyFrame.h"

namespace velmo {

/// Returns the size of the user's terminal as the host accepts it; the usual one if there is none.
PtyFrame::Size terminalSize();

} // namespace velmo
