#include "core/windows/WindowPrivacy.h"

#include "core/support/BundleIdentifier.h"
#include "core/support/Text.h"

#include <algorithm>
#include <string>

namespace velmo::WindowPrivacy {

bool isSensitiveApp(std::optional<std::string_view> bundleId) {
    return bundleId && BundleIdentifier::isOneOf(*bundleId, sensitiveBundleIds);
}

bool looksPrivate(std::optional<std::string_view> title) {
    if (!title)
        return false;
    const std::string normalized = Text::lowercased(Text::composed(*title));
    return std::ranges::any_of(
        privateTitleMarkers, [&](std::string_view marker) { return normalized.contains(marker); });
}

bool isPrivate(std::optional<std::string_view> bundleId, std::optional<std::string_view> title) {
    return isSensitiveApp(bundleId) || looksPrivate(title);
}

} // namespace velmo::WindowPrivacy
