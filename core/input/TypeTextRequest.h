#pragma once

#include "core/support/Record.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Asks for a text to be typed.
struct TypeTextRequest {
    std::string text;
    bool enter = false; ///< press Return afterwards

    /// Reads {"text":"hi","enter":true} of at most 8192 bytes: a text of 1 to 500 UTF-16 units in
    /// which tab, line feed and carriage return are the only characters below U+0020, and no
    /// U+007F; "enter" a boolean, false when it is missing. Absent when any other member is there.
    static std::optional<TypeTextRequest> parse(std::string_view json);

    static constexpr auto fields = std::tuple{field("text", &TypeTextRequest::text),
                                              field("enter", &TypeTextRequest::enter).orDefault()};
    bool operator==(const TypeTextRequest&) const = default;
};

} // namespace velmo
