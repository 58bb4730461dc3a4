#pragma once

#include "core/windows/AppTarget.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

/// Whose windows may be moved and resized from the phone.
namespace velmo::ArrangePolicy {

/// The system's prompts: moving them about could trick the user. In lower case, compared in any.
inline constexpr auto unmovableBundleIds = std::to_array<std::string_view>({
    "com.apple.securityagent",
    "com.apple.localauthentication.uiagent",
    "com.apple.coreservices.uiagent",
});

/// False too for the product's own applications; true for an application without identifier.
bool mayArrange(std::optional<std::string_view> bundleId);

/// Whether the running process is still the target's, as for a force-quit: its identity
/// (`ForceQuitPolicy::identityMatches`) and its start time (`startMatches`).
bool identityMatches(const AppTarget& target, std::optional<std::string_view> bundleId,
                     std::optional<std::string_view> bundlePath,
                     std::optional<std::int64_t> startTime);

} // namespace velmo::ArrangePolicy
