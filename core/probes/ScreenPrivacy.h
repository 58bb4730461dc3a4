#pragma once

#include "core/probes/ScreenWindowRow.h"
#include "core/windows/ScreenPoint.h"

#include <array>
#include <cstdint>
#include <set>
#include <span>
#include <string_view>

/// What on the screen must be neither shown to the phone nor clicked by it, by the rules of
/// `WindowPrivacy`.
namespace velmo::ScreenPrivacy {

/// Who asks for the user's password; in lower case, compared in any.
inline constexpr auto authBundleIds = std::to_array<std::string_view>(
    {"com.apple.securityagent", "com.apple.localauthentication.uiagent"});

bool isPrivate(const ScreenWindowRow& row);

/// The window numbers of the private ones, visible or not.
std::set<std::uint32_t> privateIDs(std::span<const ScreenWindowRow> rows);

/// Whether a visible window belongs to one of `authBundleIds`.
bool authPromptOnScreen(std::span<const ScreenWindowRow> rows);

/// Whether a click at the point would reach a private window, or one that lies right below windows
/// that are not shared: those may be seen through, or let clicks through.
bool protectedAt(const ScreenPoint& point, std::span<const ScreenWindowRow> rows);

} // namespace velmo::ScreenPrivacy
