#pragma once

#include "core/support/JsonOutline.h"

#include <string>
#include <string_view>

namespace velmo::Fuzz {

/// Returns the text with two control characters, which a JSON text must not contain, replaced by
/// many letters, because the fuzzer's own inputs are short. U+0001 stands for one letter more than
/// an outline keeps inline, U+0002 for a few letters less than a piece of a long text has.
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
