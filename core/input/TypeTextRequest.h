#pragma once

#include "core/support/Record.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// Asks for a text to be typed.
struct TypeTextRequest {
    std::string text;
    bool enter = false; ///< press Return afterwards

    /// Reads {"text":"hi","enter":true} of at most 8192 bytes. The text has 1 to 500 UTF-16 units
    /// and no control characters below U+0080 but tab, line feed and carriage return; "enter" is a
    /// boolean, and false if it is missing. Any other member is refused.
    static std::optional<TypeTextRequest> parse(std::string_view json);

    /// Returns the requests that, one after the other, type a text of any length and content.
    /// Characters that `parse` refuses are left out, and U+FFFD replaces ill-formed UTF-8. A
    /// user-perceived character is cut apart only if it is itself longer than a request may be.
    /// `enter` is false in all requests. Returns no requests if nothing of the text remains.
    static std::vector<TypeTextRequest> ofText(std::string_view text);

    static constexpr auto fields = std::tuple{field("text", &TypeTextRequest::text),
                                              field("enter", &TypeTextRequest::enter).orDefault()};
    bool operator==(const TypeTextRequest&) const = default;
};

} // namespace velmo
