#pragma once

#include "core/support/JsonOutline.h"

#include <string>
#include <string_view>

namespace velmo::Fuzz {

/// The text with control characters, which no JSON text may hold, replaced by letters, for the
/// fuzzer's own inputs are short: U+0001 by as many as make a text too long for an outline, U+0002
/// by a few less than one piece of it has.
inline std::string lengthened(std::string_view text) {
    std::string longer;
    for (const char c : text) {
        if (c == '\1')
            longer.append(JsonOutline::maxInline + 1, 'a');
        else if (c == '\2')
            longer.append(15995, 'a');
        else
            longer += c;
    }
    return longer;
}

} // namespace velmo::Fuzz
