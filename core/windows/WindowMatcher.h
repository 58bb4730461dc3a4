#pragma once

#include "core/windows/AXWindowFacts.h"
#include "core/windows/CGWindowRow.h"
#include "core/windows/WindowTarget.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// Finds the same window in the window list and among what accessibility offers. Answers are
/// positions in the list that was given. Titles are compared with their accents composed; an empty
/// title is none.
namespace velmo::WindowMatcher {

/// Bounds may differ by this `WindowBounds::distance`, in points, and still be the same window's.
inline constexpr double nearby = 24;

/// The first row of the frontmost process that is on screen. `rows` are in the order of the window
/// list, from front to back.
std::optional<std::size_t> frontIndex(std::span<const CGWindowRow> rows,
                                      std::optional<std::int32_t> frontmostPid);

/// The target among the windows of its application; absent when none can be told for sure to be it.
/// An equal window number decides. Without it a target on screen is found by `match`; one that is
/// not, among the minimized windows that hide their number, where being the only one with the
/// title, or the only one at all without a title that speaks against it, is enough.
std::optional<std::size_t> resolve(const WindowTarget& target,
                                   std::span<const AXWindowFacts> facts);

/// By number; else the nearest of those with the title, or the only one with it, wherever it is;
/// else the nearest of all. The nearest is at most `nearby` away, and the earliest of equals.
std::optional<std::size_t> match(std::uint32_t id, std::optional<std::string_view> title,
                                 const WindowBounds& bounds, std::span<const AXWindowFacts> facts);

} // namespace velmo::WindowMatcher
