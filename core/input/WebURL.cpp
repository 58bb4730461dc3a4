#include "core/input/WebURL.h"

#include "core/support/Ascii.h"
#include "core/support/Text.h"
#include "core/support/Uri.h"

#include <algorithm>

namespace velmo {

namespace {

constexpr std::size_t longestAddress = 2048; // bytes
constexpr std::size_t longestBundleId = 200;

/// A user part that is there but empty ("https://@host") is refused with the others.
bool isPlainWebAddress(const Uri& uri) {
    const std::string scheme = Text::lowercased(uri.scheme);
    return (scheme == "http" || scheme == "https") && !uri.host.empty() && !uri.userInfo;
}

} // namespace

std::optional<WebURL> WebURL::parse(std::optional<std::string_view> text) {
    if (!text || text->empty() || text->size() > longestAddress
        || std::ranges::any_of(*text, Ascii::isSpaceOrControl))
        return std::nullopt;
    const auto uri = Uri::parse(*text);
    if (!uri || !isPlainWebAddress(*uri))
        return std::nullopt;
    return WebURL{.text = std::string(*text)};
}

bool WebURL::isBundleId(std::optional<std::string_view> text) {
    return text && !text->empty() && text->size() <= longestBundleId
           && Ascii::isLetterOrDigit(text->front()) && Ascii::isMadeOfLettersDigitsAnd(".-", *text);
}

} // namespace velmo
