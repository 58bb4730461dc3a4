#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/TerminalModes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// The last MiB of a program's output, and the terminal modes that older output has set. All
/// viewers of a session are sent their output from this one log, each from its own position, so
/// that no viewer needs a copy. Positions count the bytes since the program's start.
class OutputLog {
public:
    static constexpr std::size_t kept = std::size_t{1} << 20;    ///< bytes
    static constexpr std::size_t maxRead = std::size_t{1} << 16; ///< bytes

    using Position = std::uint64_t;

    /// Returns room for the next output. Drops the output that is older than the last MiB.
    std::span<std::uint8_t> room();

    /// Adds the first bytes of the room that was returned last.
    void commit(std::size_t bytes) { end_ += bytes; }

    [[nodiscard]] Position begin() const { return begin_; }

    [[nodiscard]] Position end() const { return end_; }

    /// Returns output from a position on, which must still be kept: at most `max` bytes, and fewer
    /// at the end or where the memory wraps. The view lives until the next `room`.
    [[nodiscard]] ByteView at(Position position, std::size_t max) const;

    /// Where a replay begins.
    struct Start {
        Position position;
        std::string sequences; ///< set a terminal's modes as they were at the position
        bool reportsFocus;     ///< the program had asked for focus reports before the position
    };

    /// Returns the program's start if all of its output is kept, or else the first beginning of a
    /// line outside of any control sequence. With a number of lines, a replay begins no earlier
    /// than at the first of so many last lines, the unfinished one included.
    [[nodiscard]] Start replayStart(std::optional<std::size_t> lines = {}) const;

    /// Drops all output and frees the memory.
    void clear();

private:
    [[nodiscard]] Position beginningOfLast(std::size_t lines) const;

    static constexpr std::size_t capacity = kept + maxRead;

    std::unique_ptr<std::uint8_t[]> memory_; ///< null before the first output
    Position begin_ = 0;
    Position end_ = 0;
    TerminalModes modes_; ///< as of `begin_`
};

} // namespace velmo
