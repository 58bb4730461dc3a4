#pragma once

#include "platform/posix/StandardStreams.h"

#include <stdexcept>
#include <string>
#include <string_view>

/// Prints a play's words and the facts that it has checked.
namespace velmo {

inline void say(std::string_view text) {
    writeStandardOutput(std::string(text) + "\n");
}

/// Ends the play with an exception if the fact is not true.
inline void require(bool condition, const std::string& what) {
    if (!condition)
        throw std::runtime_error(what);
    say("    ok: " + what);
}

} // namespace velmo
