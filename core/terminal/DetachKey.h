#pragma once

#include "core/support/Bytes.h"

#include <cstdint>
#include <optional>

namespace velmo::PtyAttach {

/// Finds the key that detaches, Control-] and then "d" or "D", among the bytes that the user types.
/// Control-] itself waits for the byte that follows: a second Control-] sends it once, and any
/// other byte is sent with Control-] before it.
///
/// The times here are whole milliseconds, unlike the library's other times, which are seconds as
/// `double`: the loop that polls the terminal times the key presses and counts in milliseconds. Any
/// clock that never goes back will do.
class DetachKey {
public:
    static constexpr std::uint8_t escape = 29; ///< Control-]
    static constexpr std::int64_t timeoutMs = 1000;

    struct Result {
        Bytes forward; ///< to send to the program
        bool detach = false;

        bool operator==(const Result&) const = default;
    };

    /// Takes the bytes that the user typed. After a detach, the bytes that follow in the same call
    /// are dropped, and the key starts anew.
    Result feed(ByteView typed, std::int64_t nowMs);

    /// Returns a Control-] that has waited for a second, or else nothing. The caller calls this on
    /// a timer, so that a lone Control-] reaches the program.
    Bytes tick(std::int64_t nowMs);

    /// Returns when `tick` is due; absent if no Control-] waits.
    [[nodiscard]] std::optional<std::int64_t> deadlineMs() const;

private:
    std::optional<std::int64_t> since_; ///< when the waiting Control-] was typed
};

} // namespace velmo::PtyAttach
