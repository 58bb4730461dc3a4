#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// An address that the phone may ask the host to open.
struct WebURL {
    std::string text; ///< exactly as it was given

    /// Reads an absolute http or https address of at most 2048 bytes in the strict grammar of RFC
    /// 3986, with a host and without user name and password. Blanks, control characters,
    /// backslashes and characters beyond ASCII, which browsers would repair, are refused. An
    /// address that a browser reads differently is accepted where the grammar allows it: by the
    /// grammar, the host of "https://0177.0.0.1/" is a name.
    static std::optional<WebURL> parse(std::optional<std::string_view> text);

    /// Tells whether the text can be the identifier of an application bundle: 1 to 200 ASCII
    /// letters, digits, dots and hyphens, a letter or digit first.
    static bool isBundleId(std::optional<std::string_view> text);

    bool operator==(const WebURL&) const = default;
};

} // namespace velmo
