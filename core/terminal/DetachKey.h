#pragma once

#include "core/support/Bytes.h"

#include <cstdint>
#include <optional>

namespace velmo::PtyAttach {

/// Finds the key that detaches, Control-] and then "d" or "D", among the bytes that the user types.
/// Control-] itself waits for the byte that follows: Control-] again sends it once, any other byte
/// is sent with Control-] before it.
///
/// Unlike the library's other times, which are seconds as `double`, the times here are whole
/// milliseconds: key presses are timed by the loop that polls the terminal, which counts in these.
/// They may come from any clock that never goes back.
class DetachKey {
public:
    static constexpr std::uint8_t escape = 29; ///< Control-]
    static constexpr std::int64_t timeoutMs = 1000;

    struct Result {
        Bytes forward; ///< to send to the program
        bool detach = false;

        bool operator==(const Result&) const = default;
    };

    /// Takes what the user typed. What follows the detaching byte in the same chunk is dropped, and
    /// the key is then as new.
    Result feed(ByteView typed, std::int64_t nowMs);

    /// Returns Control-] once it has waited for a whole second, else nothing. The caller calls this
    /// on a timer, so that a lone Control-] reaches the program.
    Bytes tick(std::int64_t nowMs);

private:
    std::optional<std::int64_t> since_; ///< when the escape that waits was typed
};

} // namespace velmo::PtyAttach
