#pragma once

#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/SessionExit.h"

#include <string_view>

namespace velmo {

/// Writes to standard output and returns the exit status.
inline int print(std::string_view text) {
    return writeStandardOutput(text)
               ? SessionExit::success
               : complain("standard output can't be written", SessionExit::unwritten);
}

} // namespace velmo
