#include "core/windows/ArrangePolicy.h"

#include "core/apps/ForceQuitPolicy.h"
#include "core/support/BundleIdentifier.h"

namespace velmo::ArrangePolicy {

bool mayArrange(std::optional<std::string_view> bundleId) {
    return !bundleId
           || !(BundleIdentifier::isOneOf(*bundleId, unmovableBundleIds)
                || BundleIdentifier::isOfVelmo(*bundleId));
}

bool identityMatches(const AppTarget& target, std::optional<std::string_view> bundleId,
                     std::optional<std::string_view> bundlePath,
                     std::optional<std::int64_t> startTime) {
    return ForceQuitPolicy::identityMatches(target.appId, bundleId, bundlePath)
           && ForceQuitPolicy::startMatches(target.started, startTime);
}

} // namespace velmo::ArrangePolicy
