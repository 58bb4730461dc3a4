#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/TerminalModes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace velmo {

/// The last MiB of what a program wrote, and what older output has set on the terminal. All viewers
/// of a session are sent their output from here, each from a position of its own, so that none
/// needs a copy. Positions count the bytes since the program's start.
class OutputLog {
public:
    static constexpr std::size_t kept = std::size_t{1} << 20;    ///< bytes
    static constexpr std::size_t maxRead = std::size_t{1} << 16; ///< bytes

    using Position = std::uint64_t;

    /// Returns room for the next output. What is older than the last MiB is dropped for it.
    std::span<std::uint8_t> room();

    /// Adds the first bytes of the room that was returned last.
    void commit(std::size_t bytes) { end_ += bytes; }

    [[nodiscard]] Position begin() const { return begin_; }

    [[nodiscard]] Position end() const { return end_; }

    /// Returns output from a position on that is still kept: at most `max` bytes, and fewer at the
    /// end or where the memory wraps. The view lives until the next `room`.
    [[nodiscard]] ByteView at(Position position, std::size_t max) const;

    /// Where a replay begins, and what sets a terminal as it was there.
    struct Start {
        Position position;
        std::string sequences;
    };

    /// Returns the first beginning of a line outside of any control sequence, or the program's
    /// start if all of its output is kept.
    [[nodiscard]] Start replayStart() const;

    /// Gives the memory back. Nothing is kept any more.
    void clear();

private:
    static constexpr std::size_t capacity = kept + maxRead;

    std::unique_ptr<std::uint8_t[]> memory_; ///< none before the first output
    Position begin_ = 0;
    Position end_ = 0;
    TerminalModes modes_; ///< as of `begin_`
};

} // namespace velmo
