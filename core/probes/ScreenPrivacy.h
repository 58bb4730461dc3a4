#pragma once

#include "core/probes/ScreenWindowRow.h"
#include "core/windows/PasswordPrompts.h"
#include "core/windows/ScreenPoint.h"

#include <array>
#include <cstdint>
#include <set>
#include <span>
#include <string_view>

/// Decides which parts of the screen must be neither shown to the phone nor clicked by it.
/// `WindowPrivacy` decides which windows are private.
namespace velmo::ScreenPrivacy {

/// The applications with windows that are authentication prompts, in lower case.
inline constexpr auto authBundleIds = std::to_array<std::string_view>(
    {PasswordPrompts::securityAgent, PasswordPrompts::localAuthentication});

bool isPrivate(const ScreenWindowRow& row);

/// Returns the window numbers of all private rows, even of those that are not visible.
std::set<std::uint32_t> privateIDs(std::span<const ScreenWindowRow> rows);

/// Tells whether a visible window belongs to one of `authBundleIds`, in any letter case.
bool authPromptOnScreen(std::span<const ScreenWindowRow> rows);

/// Tells whether a click at the point could reach a private window. The frontmost visible window
/// there that is private or shared decides. A window that is neither private nor shared hides
/// nothing, because it may be an overlay that passes clicks on to the window below.
bool protectedAt(const ScreenPoint& point, std::span<const ScreenWindowRow> rows);

} // namespace velmo::ScreenPrivacy
