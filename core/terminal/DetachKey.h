#pragma once

#include "core/support/Bytes.h"

#include <cstdint>
#include <optional>

namespace velmo::PtyAttach {

/// Finds the key that detaches, Control-] and then "d" or "D", among the bytes that the user types.
/// Control-] twice sends it once; before any other byte it is sent with that byte.
///
/// Times are milliseconds of any clock that never goes back.
class DetachKey {
public:
    static constexpr std::uint8_t escape = 29;
    static constexpr std::int64_t timeoutMs = 1000;

    struct Result {
        Bytes forward; ///< towards the program
        bool detach = false;

        bool operator==(const Result&) const = default;
    };

    /// What follows the detaching byte in the chunk is dropped; the key is then as new.
    Result feed(ByteView typed, std::int64_t nowMs);

    /// Gives an escape back that was held for a whole second, once. To be called on a timer, so
    /// that a lone Control-] reaches the program.
    Bytes tick(std::int64_t nowMs);

private:
    std::optional<std::int64_t> since_; ///< when the escape that is being held was typed
};

} // namespace velmo::PtyAttach
