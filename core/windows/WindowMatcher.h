#pragma once

#include "core/windows/AXWindowFacts.h"
#include "core/windows/CGWindowRow.h"
#include "core/windows/WindowTarget.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// Finds the window of the window list among those that accessibility reports. Every function
/// returns an index into its list. Titles are compared with their accents composed (NFC); an empty
/// title counts as absent.
namespace velmo::WindowMatcher {

/// Bounds that are at most this `WindowBounds::distance` apart can be those of the same window.
inline constexpr double maxDistance = 24; ///< points

/// Returns the first row that belongs to the frontmost process and is on screen. The rows must be
/// those that `WindowFilter::keep` keeps, in the order of the window list, from front to back: the
/// first row of the whole list may be a menu or a shadow, which the phone's list never contains.
/// `WindowList::records` passes such rows.
std::optional<std::size_t> frontIndex(std::span<const CGWindowRow> rows,
                                      std::optional<std::int32_t> frontmostPid);

/// Finds the target among the windows of its application; absent if no window is certain to be it.
///
/// A window with the target's number wins. Otherwise a target on screen is found as by `match`, and
/// only if it has bounds. A target that is not on screen is first looked for among the minimized
/// windows without a number. The only one with the target's title wins. If the target has bounds,
/// the only one at all wins too, unless both have a title; otherwise the target is found as by
/// `match` among all windows without a number.
std::optional<std::size_t> resolve(const WindowTarget& target,
                                   std::span<const AXWindowFacts> facts);

/// Returns the window with the number; otherwise the closest one with the title, or the only one
/// with the title, however far away; otherwise the closest of all. The closest is at most
/// `maxDistance` away, and the earliest if several are equally close.
std::optional<std::size_t> match(std::uint32_t id, std::optional<std::string_view> title,
                                 const WindowBounds& bounds, std::span<const AXWindowFacts> facts);

} // namespace velmo::WindowMatcher
