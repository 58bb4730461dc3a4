#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/DetachKey.h"

#include <cstdint>
#include <optional>

namespace velmo::PtyAttach {

/// Finds the key that detaches, as `DetachKey` does, also where a program has made the terminal
/// spell keys as sequences: Control-] as CSI 27;5;93~ (modifyOtherKeys) or CSI 93;5u (the keyboard
/// enhancements of kitty, with event types, locks and texts), and "d" likewise. What does not
/// detach reaches the program byte for byte as it was typed.
///
/// A released key, or a pressed modifier, ends no waiting for the byte after Control-], and stays
/// in its place behind it. A sequence that is cut between two calls waits for its rest, but an ESC
/// alone does not: a sequence with nothing but its ESC in the first call is not recognised.
class SpelledDetachKey {
public:
    /// How long the beginning of a sequence waits for its rest.
    static constexpr std::int64_t cutTimeoutMs = 50;

    /// Takes the bytes that the user typed, as `DetachKey::feed` does.
    DetachKey::Result feed(ByteView typed, std::int64_t nowMs);

    /// Returns what has waited long enough: Control-] for a second, or the beginning of a sequence.
    Bytes tick(std::int64_t nowMs);

    /// Returns when `tick` is due; absent if nothing waits.
    [[nodiscard]] std::optional<std::int64_t> deadlineMs() const;

private:
    bool take(ByteView key, std::int64_t nowMs, Bytes& forward);
    bool press(std::uint8_t byte, std::int64_t nowMs, Bytes& forward);

    DetachKey key_;
    Bytes
        waiting_; ///< Control-] as it was typed while `key_` waits, and what has no effect after it
    Bytes cut_;   ///< the beginning of a sequence
    std::int64_t cutSince_ = 0;
};

} // namespace velmo::PtyAttach
