#pragma once

#include "core/windows/FocusEvent.h"
#include "core/windows/FocusSnapshot.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace velmo {

/// Makes sure that text from the phone is typed only where the phone believes the focus to be.
/// Every change of the focus gets a new number. The phone is told the number, and names it when it
/// asks for typing. Each connection of a phone has a tracker of its own.
struct FocusTracker {
    std::optional<FocusSnapshot> current; ///< the last focus that was observed
    std::int64_t revision = 0;            ///< the number of `current`; 0 before the first
    bool requested = false; ///< the phone asked: an event is due even without a change
    bool cacheable = false; ///< a focus was observed, so that `acceptsCached` may accept

    /// Takes note of the focus and returns the event to send. Returns nothing if the focus is the
    /// same and no event was requested. A change of the process alone is a change too.
    std::optional<FocusEvent> observe(const FocusSnapshot& snapshot);

    /// Tells whether a request to type may proceed: its target is the current number in decimal,
    /// and `now`, the focus as just read, is still the current one. A password field is accepted:
    /// whether it is safe to type there must be asked of `TypingSafety::decide` as well.
    [[nodiscard]] bool accepts(std::string_view target, const FocusSnapshot& now) const;

    /// Tells the same from a process and an element that were read `age` seconds ago, at most
    /// `maxAge`. A password field is never accepted, nor is an unknown process (0).
    [[nodiscard]] bool acceptsCached(std::string_view target, std::int32_t pid,
                                     std::string_view identity, double age, double maxAge) const;

    bool operator==(const FocusTracker&) const = default;
};

} // namespace velmo
