#include "core/windows/FramePlan.h"

#include <algorithm>
#include <cmath>

namespace velmo::FramePlan {

namespace {

bool isNear(double actual, double wanted) {
    return std::abs(actual - wanted) <= tolerance;
}

} // namespace

std::vector<Step> steps(const std::optional<WindowBounds>& current, const WindowBounds& target,
                        bool resizable) {
    const Position position{.x = target.x, .y = target.y};
    if (!resizable)
        return {position};
    std::vector<Step> plan;
    if (current && (target.width < current->width || target.height < current->height))
        plan.emplace_back(Size{.width = std::min(target.width, current->width),
                               .height = std::min(target.height, current->height)});
    plan.insert(plan.end(),
                {position, Size{.width = target.width, .height = target.height}, position});
    return plan;
}

bool landed(const std::optional<WindowBounds>& bounds, const WindowBounds& target, bool resizable) {
    return bounds && isNear(bounds->x, target.x) && isNear(bounds->y, target.y)
           && (!resizable
               || (isNear(bounds->width, target.width) && isNear(bounds->height, target.height)));
}

} // namespace velmo::FramePlan
