#pragma once

#include "core/support/JsonOutline.h"

#include <string>
#include <string_view>

namespace velmo::Fuzz {

/// The text with every U+0001, which no JSON text may hold, replaced by as many letters as make a
/// text too long for an outline: the fuzzer's own inputs are short.
inline std::string lengthened(std::string_view text) {
    std::string longer;
    for (const char c : text) {
        if (c == '\1')
            longer.append(JsonOutline::longestInline + 1, 'a');
        else
            longer += c;
    }
    return longer;
}

} // namespace velmo::Fuzz
