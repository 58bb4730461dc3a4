#include "core/support/FileUrl.h"

#include "core/support/Ascii.h"
#include "core/support/Text.h"
#include "core/support/Uri.h"

#include <cstddef>
#include <utility>

namespace velmo {

namespace {

/// Letters and digits apart. The semicolon, which the grammar would allow, is escaped as the
/// platform does it: it once began the parameters of a path.
constexpr std::string_view plainPunctuation = "-._~!$&'()*+,:=@/";

constexpr std::string_view hexDigits = "0123456789ABCDEF";

/// Of a digit of either case.
std::size_t hexValue(char digit) {
    return hexDigits.find(digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit);
}

/// Every "%" must have two hexadecimal digits behind it.
std::string withoutEscapes(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        result += static_cast<char>(hexValue(text[i + 1]) << 4U | hexValue(text[i + 2]));
        i += 2;
    }
    return result;
}

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

std::optional<FileUrl> FileUrl::parse(std::string_view text) {
    const auto uri = text.starts_with("file://") ? Uri::parse(text) : std::nullopt;
    if (!uri)
        return std::nullopt;
    std::string path = withoutEscapes(uri->path);
    if (path.contains('\0') || !Text::isValidUtf8(path))
        return std::nullopt;
    return FileUrl{.path = std::move(path)};
}

} // namespace velmo
