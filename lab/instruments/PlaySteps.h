#pragma once

#include "platform/posix/StandardStreams.h"

#include <stdexcept>
#include <string>
#include <string_view>

/// What a play prints: its words, and each fact that it has checked.
namespace velmo {

inline void say(std::string_view text) {
    writeStandardOutput(std::string(text) + "\n");
}

/// Ends the play with an exception if the fact does not hold.
inline void require(bool condition, const std::string& what) {
    if (!condition)
        throw std::runtime_error(what);
    say("    ok: " + what);
}

} // namespace velmo
