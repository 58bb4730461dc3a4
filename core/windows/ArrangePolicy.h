#pragma once

#include "core/windows/AppTarget.h"
#include "core/windows/PasswordPrompts.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

/// Decides whose windows may be moved and resized from the phone.
namespace velmo::ArrangePolicy {

/// The system's own prompts, in lower case. A prompt that is moved to another place on the screen
/// could trick the user into a click.
inline constexpr auto unmovableBundleIds = std::to_array<std::string_view>({
    PasswordPrompts::securityAgent,
    PasswordPrompts::localAuthentication,
    "com.apple.coreservices.uiagent",
});

/// Tells whether the windows of an application may be arranged. Ask before a display is divided
/// among windows: `WindowMove::perform` refuses the others, so that their parts would stay empty.
/// `DisplayRecord::work` is what is divided.
///
/// Returns false for the product's own applications and for `unmovableBundleIds`, in any letter
/// case, and true for all others, including an application without an identifier.
bool mayArrange(std::optional<std::string_view> bundleId);

/// Tells whether the running process is still the target's. The rules are those of a force-quit:
/// its identity must match (`ForceQuitPolicy::identityMatches`), and so must its start time
/// (`ForceQuitPolicy::startMatches`), in the unit of `AppTarget::startedText`.
bool identityMatches(const AppTarget& target, std::optional<std::string_view> bundleId,
                     std::optional<std::string_view> bundlePath,
                     std::optional<std::int64_t> startTime);

} // namespace velmo::ArrangePolicy
