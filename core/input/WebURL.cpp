#include "core/input/WebURL.h"

#include "core/support/Ascii.h"
#include "core/support/Text.h"
#include "core/support/Uri.h"

#include <algorithm>

namespace velmo {

namespace {

constexpr std::size_t maxAddress = 2048; // bytes
constexpr std::size_t maxBundleId = 200; // characters

/// An empty user name counts as a user name: "https://@host" is refused.
bool isPlainWebAddress(const Uri& uri) {
    const std::string scheme = Text::lowercased(uri.scheme);
    return (scheme == "http" || scheme == "https") && !uri.host.empty() && !uri.userInfo;
}

} // namespace

std::optional<WebURL> WebURL::parse(std::optional<std::string_view> text) {
    if (!text || text->empty() || text->size() > maxAddress
        || std::ranges::any_of(*text, Ascii::isSpaceOrControl))
        return std::nullopt;
    const auto uri = Uri::parse(*text);
    if (!uri || !isPlainWebAddress(*uri))
        return std::nullopt;
    return WebURL{.text = std::string(*text)};
}

bool WebURL::isBundleId(std::optional<std::string_view> text) {
    return text && !text->empty() && text->size() <= maxBundleId
           && Ascii::isLetterOrDigit(text->front()) && Ascii::isMadeOfLettersDigitsAnd(".-", *text);
}

} // namespace velmo
