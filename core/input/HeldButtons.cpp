#include "core/input/HeldButtons.h"

#include <algorithm>
#include <utility>

namespace velmo {

bool HeldButtons::isDown(bool right) const {
    return std::ranges::find(presses_, right, &Press::right) != presses_.end();
}

void HeldButtons::pressed(Press press) {
    if (!isDown(press.right))
        presses_.push_back(press);
}

std::optional<HeldButtons::Press> HeldButtons::take(bool right) {
    const auto found = std::ranges::find(presses_, right, &Press::right);
    if (found == presses_.end())
        return std::nullopt;
    const Press press = *found;
    presses_.erase(found);
    return press;
}

std::vector<HeldButtons::Press> HeldButtons::takeAll() {
    std::ranges::reverse(presses_);
    return std::exchange(presses_, {});
}

std::optional<HeldButtons::Press> HeldButtons::dragged() const {
    const auto left = std::ranges::find(presses_, false, &Press::right);
    if (left != presses_.end())
        return *left;
    return presses_.empty() ? std::nullopt : std::optional(presses_.front());
}

} // namespace velmo
