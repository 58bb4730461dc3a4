#include "phone/CookieHeader.h"

#include "core/support/Text.h"

#include <algorithm>

namespace velmo {

std::optional<std::string_view> cookieIn(std::string_view header, std::string_view name) {
    std::optional<std::string_view> found;
    while (!header.empty()) {
        const std::size_t end = std::min(header.find(';'), header.size());
        const std::string_view pair = Text::trimmed(header.substr(0, end), Text::isSpaceOrTab);
        header.remove_prefix(std::min(end + 1, header.size()));
        const std::size_t sign = pair.find('=');
        if (sign == std::string_view::npos || pair.substr(0, sign) != name)
            continue;
        if (found)
            return std::nullopt;
        found = pair.substr(sign + 1);
    }
    return found;
}

} // namespace velmo
