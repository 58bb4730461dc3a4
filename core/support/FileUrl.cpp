#include "core/support/FileUrl.h"

#include "core/support/Ascii.h"

#include <string_view>

namespace velmo {

namespace {

/// Letters and digits apart. The semicolon, which the grammar would allow, is escaped as the
/// platform does it: it once began the parameters of a path.
constexpr std::string_view plainPunctuation = "-._~!$&'()*+,:=@/";

constexpr std::string_view hexDigits = "0123456789ABCDEF";

} // namespace

std::optional<std::string> FileUrl::text() const {
    if (!path.starts_with('/'))
        return std::nullopt;
    std::string text = "file://";
    for (const char c : path) {
        if (Ascii::isLetterOrDigit(c) || plainPunctuation.contains(c)) {
            text += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        text += '%';
        text += hexDigits[byte >> 4U];
        text += hexDigits[byte & 0xFU];
    }
    return text;
}

} // namespace velmo
