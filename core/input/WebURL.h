#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// An address that the phone may have opened on the host.
struct WebURL {
    std::string text; ///< as it came

    /// An absolute http or https address in the strict grammar of RFC 3986, of at most 2048 bytes,
    /// with a host and without user name and password. What browsers would repair is refused:
    /// blanks, control characters, backslashes, anything that is not ASCII, any "@" before the
    /// path.
    static std::optional<WebURL> parse(std::optional<std::string_view> text);

    /// Whether the text can be the identifier of an application bundle: 1 to 200 ASCII letters,
    /// digits, dots and hyphens, a letter or digit first.
    static bool isBundleId(std::optional<std::string_view> text);

    bool operator==(const WebURL&) const = default;
};

} // namespace velmo
