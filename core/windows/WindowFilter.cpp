#include "core/windows/WindowFilter.h"

#include "core/support/BundleIdentifier.h"
#include "core/support/Text.h"

namespace velmo::WindowFilter {

namespace {

constexpr std::int64_t ordinaryLayer = 0;
constexpr double maxInvisibleAlpha = 0.01;
constexpr double minSide = 60; ///< points

} // namespace

bool keep(const CGWindowRow& row, std::int32_t ownPid, std::optional<std::string_view> bundleId,
          bool isRegularApp) {
    if (row.layer != ordinaryLayer || row.pid == ownPid || !isRegularApp)
        return false;
    // Written so that an opacity or a side that is "not a number" is refused.
    if (!(row.alpha > maxInvisibleAlpha && row.bounds.width >= minSide
          && row.bounds.height >= minSide))
        return false;
    return !Text::isOneOf(row.owner, systemOwners)
           && !(bundleId && BundleIdentifier::isOfVelmo(*bundleId));
}

} // namespace velmo::WindowFilter
