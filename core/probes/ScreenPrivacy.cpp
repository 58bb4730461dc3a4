#include "core/probes/ScreenPrivacy.h"

#include "core/support/BundleIdentifier.h"
#include "core/windows/WindowPrivacy.h"

#include <algorithm>

namespace velmo::ScreenPrivacy {

namespace {

constexpr std::int64_t notShared = 0;

/// An opacity that is "not a number" counts as invisible.
bool isVisible(const ScreenWindowRow& row) {
    return row.alpha > 0;
}

} // namespace

bool isPrivate(const ScreenWindowRow& row) {
    return WindowPrivacy::isPrivate(row.bundleId, row.title);
}

std::set<std::uint32_t> privateIDs(std::span<const ScreenWindowRow> rows) {
    std::set<std::uint32_t> ids;
    for (const ScreenWindowRow& row : rows) {
        if (isPrivate(row))
            ids.insert(row.id);
    }
    return ids;
}

bool authPromptOnScreen(std::span<const ScreenWindowRow> rows) {
    return std::ranges::any_of(rows, [](const ScreenWindowRow& row) {
        return isVisible(row) && row.bundleId
               && BundleIdentifier::isOneOf(*row.bundleId, authBundleIds);
    });
}

bool protectedAt(const ScreenPoint& point, std::span<const ScreenWindowRow> rows) {
    for (const ScreenWindowRow& row : rows) {
        if (!isVisible(row) || !row.bounds.contains(point))
            continue;
        if (isPrivate(row))
            return true;
        if (row.sharingState != notShared)
            return false;
    }
    return false;
}

} // namespace velmo::ScreenPrivacy
