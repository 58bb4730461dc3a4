#include "core/windows/ClickCounter.h"

#include <cmath>

namespace velmo {

std::int64_t ClickCounter::press(bool right, const ScreenPoint& at, double time) {
    const bool follows = last && last->right == right && time - last->time <= interval
                         && std::abs(at.x - last->at.x) <= slop
                         && std::abs(at.y - last->at.y) <= slop;
    last = Press{.right = right, .at = at, .time = time, .count = follows ? last->count + 1 : 1};
    return last->count;
}

} // namespace velmo
