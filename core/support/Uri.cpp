#include "core/support/Uri.h"

#include "core/support/Ascii.h"
#include "core/support/Decimal.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace velmo {

namespace {

/// What may stand anywhere besides letters, digits and escapes: the grammar's "unreserved" and
/// "sub-delims".
constexpr std::string_view plain = "-._~!$&'()*+,;=";
constexpr std::string_view inUserInfo = "-._~!$&'()*+,;=:";
constexpr std::string_view inPath = "-._~!$&'()*+,;=:@/";
constexpr std::string_view inQueryOrFragment = "-._~!$&'()*+,;=:@/?";

constexpr std::size_t groupsOfAddress = 8; // of 16 bits, in version 6
constexpr std::size_t maxGroupDigits = 4;

bool isMadeOf(std::string_view punctuation, std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            if (!Ascii::isLetterOrDigit(text[i]) && !punctuation.contains(text[i]))
                return false;
        } else {
            if (text.size() - i < 3 || !Ascii::isHex(text[i + 1]) || !Ascii::isHex(text[i + 2]))
                return false;
            i += 2;
        }
    }
    return true;
}

bool isMadeOf(std::string_view punctuation, const std::optional<std::string_view>& text) {
    return !text || isMadeOf(punctuation, *text);
}

bool isScheme(std::string_view text) {
    return !text.empty() && Ascii::isLetter(text.front())
           && Ascii::isMadeOfLettersDigitsAnd("+-.", text);
}

/// What stands before the delimiter, which is taken away with it; the whole text without one.
std::string_view takeUpTo(std::string_view& text, std::string_view delimiter) {
    const std::size_t end = std::min(text.find(delimiter), text.size());
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(std::min(end + delimiter.size(), text.size()));
    return taken;
}

/// What stands behind the delimiter, which is taken away from the text with it.
std::optional<std::string_view> takeBehind(std::string_view& text, char delimiter) {
    const std::size_t at = text.find(delimiter);
    if (at == std::string_view::npos)
        return std::nullopt;
    const std::string_view taken = text.substr(at + 1);
    text = text.substr(0, at);
    return taken;
}

bool isAddressVersion4(std::string_view text) {
    if (std::ranges::count(text, '.') != 3 || text.ends_with('.'))
        return false;
    while (!text.empty()) {
        const std::string_view part = takeUpTo(text, ".");
        if (part != "0" && !Decimal::parsePositive(part, 255))
            return false;
    }
    return true;
}

/// Returns the number of groups between single colons, where a version 4 address at the end counts
/// as two; absent if the text is not made of groups. An empty text has 0 groups.
std::optional<std::size_t> groupsIn(std::string_view text, bool atEnd) {
    std::size_t groups = 0;
    if (text.ends_with(':'))
        return std::nullopt;
    while (!text.empty()) {
        const std::string_view group = takeUpTo(text, ":");
        if (atEnd && text.empty() && isAddressVersion4(group))
            return groups + 2;
        if (group.empty() || group.size() > maxGroupDigits
            || !std::ranges::all_of(group, Ascii::isHex))
            return std::nullopt;
        ++groups;
    }
    return groups;
}

/// "::", at most once, stands for one group of zeros or more.
bool isAddressVersion6(std::string_view text) {
    const std::size_t gap = text.find("::");
    if (gap == std::string_view::npos)
        return groupsIn(text, true) == groupsOfAddress;
    const auto before = groupsIn(text.substr(0, gap), false);
    const auto after = groupsIn(text.substr(gap + 2), true);
    return before && after && *before + *after < groupsOfAddress;
}

/// "v", a version in hexadecimal digits, ".", and what that version makes of it.
bool isAddressOfTheFuture(std::string_view text) {
    if (!text.starts_with('v') && !text.starts_with('V'))
        return false;
    text.remove_prefix(1);
    const std::string_view version = takeUpTo(text, ".");
    return !version.empty() && std::ranges::all_of(version, Ascii::isHex) && !text.empty()
           && !text.contains('%') && isMadeOf(inUserInfo, text);
}

/// Takes the host from the front of what may have a port behind it.
std::optional<std::string_view> takeHost(std::string_view& hostAndPort) {
    if (!hostAndPort.starts_with('[')) {
        const std::string_view host = hostAndPort.substr(0, hostAndPort.find(':'));
        hostAndPort.remove_prefix(host.size());
        return isMadeOf(plain, host) ? std::optional(host) : std::nullopt;
    }
    const std::size_t end = hostAndPort.find(']');
    if (end == std::string_view::npos)
        return std::nullopt;
    const std::string_view host = hostAndPort.substr(1, end - 1);
    hostAndPort.remove_prefix(end + 1);
    if (!isAddressVersion6(host) && !isAddressOfTheFuture(host))
        return std::nullopt;
    return host;
}

} // namespace

std::optional<Uri> Uri::parse(std::string_view text) {
    Uri uri;
    uri.fragment = takeBehind(text, '#');
    uri.query = takeBehind(text, '?');
    const std::size_t colon = text.find("://");
    if (colon == std::string_view::npos || !isScheme(text.substr(0, colon)))
        return std::nullopt;
    uri.scheme = text.substr(0, colon);

    std::string_view authority = text.substr(colon + 3);
    const std::size_t slash = std::min(authority.find('/'), authority.size());
    uri.path = authority.substr(slash);
    authority = authority.substr(0, slash);
    if (auto behind = takeBehind(authority, '@'))
        uri.userInfo = std::exchange(authority, *behind);
    const auto host = takeHost(authority);
    if (!host)
        return std::nullopt;
    uri.host = *host;
    uri.port = takeBehind(authority, ':');

    const bool wellFormed = authority.empty() && isMadeOf(inUserInfo, uri.userInfo)
                            && std::ranges::all_of(uri.port.value_or(""), Ascii::isDigit)
                            && isMadeOf(inPath, uri.path) && isMadeOf(inQueryOrFragment, uri.query)
                            && isMadeOf(inQueryOrFragment, uri.fragment);
    return wellFormed ? std::optional(uri) : std::nullopt;
}

} // namespace velmo
