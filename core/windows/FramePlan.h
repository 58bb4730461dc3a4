#pragma once

#include "core/windows/WindowBounds.h"

#include <optional>
#include <variant>
#include <vector>

/// Plans how a window is given its frame through accessibility, which sets either the position or
/// the size in one step.
namespace velmo::FramePlan {

struct Position {
    double x = 0;
    double y = 0;

    bool operator==(const Position&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;

    bool operator==(const Size&) const = default;
};

using Step = std::variant<Position, Size>;

/// Returns the steps in order. A window that can't be resized is only moved. Any other window first
/// shrinks in the directions in which the target is smaller, so that it fits at its new place; it
/// is moved again at the end, because growing may have pushed it away. Without `current`, the
/// bounds before, it does not shrink first.
std::vector<Step> steps(const std::optional<WindowBounds>& current, const WindowBounds& target,
                        bool resizable);

/// Applications round frames to grids of their own, so that each number may be off by up to this
/// much.
inline constexpr double tolerance = 40; ///< points

/// Tells whether the bounds that were read back are within `tolerance` of the target's. The size is
/// compared only if the window can be resized. Returns false for bounds that could not be read
/// (absent).
bool landed(const std::optional<WindowBounds>& bounds, const WindowBounds& target, bool resizable);

} // namespace velmo::FramePlan
