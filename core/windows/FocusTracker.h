#pragma once

#include "core/windows/FocusEvent.h"
#include "core/windows/FocusSnapshot.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace velmo {

/// Makes sure that what the phone types goes where the phone believes it goes. Every change of the
/// focus gets a new number, which the phone is told and must name when it asks for typing. One for
/// each connection of a phone.
struct FocusTracker {
    std::optional<FocusSnapshot> current; ///< the last one observed
    std::int64_t revision = 0;            ///< of `current`; from 1
    bool requested = false;               ///< the phone asked: it is owed an event, change or not
    bool cacheable = false;               ///< a focus has been observed: `acceptsCached` may accept

    /// The event to send; absent when nothing changed and none is owed. A change of the process
    /// alone is a change too.
    std::optional<FocusEvent> observe(const FocusSnapshot& snapshot);

    /// Whether typing that was asked for with this target may proceed: the target is the current
    /// number and the focus, read anew, is still the same. This says nothing about whether it is
    /// safe to type there: password fields pass, and `TypingSafety::decide` must be asked too.
    [[nodiscard]] bool accepts(std::string_view target, const FocusSnapshot& now) const;

    /// The same without reading the focus anew, when all that is known is the process and the
    /// element, `age` seconds ago. Never for a password field, nor for an unknown process (0).
    [[nodiscard]] bool acceptsCached(std::string_view target, std::int32_t pid,
                                     std::string_view identity, double age, double maxAge) const;

    bool operator==(const FocusTracker&) const = default;
};

} // namespace velmo
