#pragma once

#include <optional>
#include <string_view>

namespace velmo {

/// An absolute address with an authority, scheme://user@host:port/path?query#fragment, taken apart
/// by the strict grammar of RFC 3986. The parts are views into the text that was parsed; absent
/// ones have no delimiter either, so that an empty query differs from none. Nothing is decoded.
struct Uri {
    std::string_view scheme;
    std::optional<std::string_view> userInfo;
    std::string_view host; ///< may be empty; an IP address in brackets without them
    std::optional<std::string_view> port;
    std::string_view path; ///< empty, or beginning with "/"
    std::optional<std::string_view> query;
    std::optional<std::string_view> fragment;

    /// Takes an address apart. Absent for a text without an authority, and for blanks, backslashes,
    /// anything that is not ASCII, and a "%" without two hexadecimal digits, although browsers
    /// would repair all of these.
    static std::optional<Uri> parse(std::string_view text);

    bool operator==(const Uri&) const = default;
};

} // namespace velmo
