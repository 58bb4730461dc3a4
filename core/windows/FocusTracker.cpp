#include "core/windows/FocusTracker.h"

#include <string>

namespace velmo {

std::optional<FocusEvent> FocusTracker::observe(const FocusSnapshot& snapshot) {
    cacheable = true;
    if (current == snapshot) {
        if (!requested)
            return std::nullopt;
    } else {
        current = snapshot;
        ++revision;
    }
    requested = false;
    return FocusEvent{.target = std::to_string(revision),
                      .editable = snapshot.editable,
                      .password = snapshot.password};
}

bool FocusTracker::accepts(std::string_view target, const FocusSnapshot& now) const {
    return target == std::to_string(revision) && current == now;
}

bool FocusTracker::acceptsCached(std::string_view target, std::int32_t pid,
                                 std::string_view identity, double age, double maxAge) const {
    // An age that is "not a number" fails both comparisons.
    return cacheable && current && !current->password && current->pid >= 1 && current->pid == pid
           && current->identity == identity && age >= 0 && age <= maxAge
           && target == std::to_string(revision);
}

} // namespace velmo
