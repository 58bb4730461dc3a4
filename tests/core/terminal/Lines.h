#pragma once

#include "core/support/Text.h"

#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// A command line as words: "--cols 80" is two. No word can be empty or hold a blank.
inline std::vector<std::string> words(std::string_view line) {
    const auto pieces = Text::pieces(line, Text::isSpaceOrTab);
    return {pieces.begin(), pieces.end()};
}

} // namespace velmo
