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

    /// Reads {"text":"hi","enter":true} of at most 8192 bytes. The text has 1 to 500 UTF-16 units
    /// and no control characters below U+0080 but tab, line feed and carriage return; "enter" is a
    /// boolean, and false if it is missing. Any other member is refused.
    static std::optional<TypeTextRequest> parse(std::string_view json);

    static constexpr auto fields = std::tuple{field("text", &TypeTextRequest::text),
                                              field("enter", &TypeTextRequest::enter).orDefault()};
    bool operator==(const TypeTextRequest&) const = default;
};

} // namespace velmo
