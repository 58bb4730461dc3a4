#pragma once

#include "core/windows/WindowBounds.h"

#include <optional>
#include <variant>
#include <vector>

/// The steps, through accessibility, that give a window its frame.
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

/// A window that can't be resized is only moved. Another shrinks first, as far as it has to, so
/// that it fits where it is going; and it is moved again at the end, because growing may have
/// pushed it away. `current` is absent when it could not be read: then it does not shrink first.
std::vector<Step> steps(const std::optional<WindowBounds>& current, const WindowBounds& target,
                        bool resizable);

/// How far off, in points, a window may end in each number: applications round to their own grids.
inline constexpr double tolerance = 40;

/// Whether the bounds that were read back are the target's, within `tolerance`; the size counts
/// only where it can be changed. Absent: they could not be read.
bool landed(const std::optional<WindowBounds>& bounds, const WindowBounds& target, bool resizable);

} // namespace velmo::FramePlan
