#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/PtyFrame.h"
#include "core/terminal/SequenceReader.h"
#include "sessions/Screen.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velmo {

/// The last MiB of a program's output, and the screen as older output has left it. All viewers of a
/// session are sent their output from this one log, each from its own position, so that no viewer
/// needs a copy. Positions count the bytes since the program's start.
///
/// There is no screen before the log is full. Then the screen follows what falls out of the log,
/// and nothing else, in large pieces. In the largest window a log takes at most about 280 KiB more
/// than what it keeps: 64 for the next output, 200 for the screen, and 16 from the first `answers`
/// to `forgetAnswers`.
class OutputLog {
public:
    static constexpr std::size_t kept = std::size_t{1} << 20;    ///< bytes
    static constexpr std::size_t maxRead = std::size_t{1} << 15; ///< bytes

    using Position = std::uint64_t;

    /// The size is that of the program's terminal, from its start on.
    explicit OutputLog(PtyFrame::Size size) : firstSize_(size) {}

    /// Notes that the program's terminal has another size from here on.
    void resize(PtyFrame::Size size);

    /// Returns room for the next output. Drops output that is older than the last MiB.
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
        Position position = 0;
        std::string sequences;     ///< show the screen as it was at the position, and set the modes
        bool reportsFocus = false; ///< the program had asked for focus reports before the position

        Position anewAt = 0; ///< where the screen is shown once more, because what comes before was
                             ///<   written for another size
        std::string anew;    ///< the sequences for that; empty if it is not necessary

        /// A terminal of the program's size shows in the end what the program has drawn.
        bool isExact = false;
    };

    /// Returns the program's start if all of its output is kept, or else the first position outside
    /// of any control sequence and character. The sequences are for a terminal of this size with
    /// its cursor at the top left; without a size, for any terminal. With a number of lines, a
    /// replay begins no earlier than at the first of so many last lines, the unfinished one
    /// included, and the lines of the main screen above it are not shown.
    [[nodiscard]] Start replayStart(std::optional<PtyFrame::Size> size,
                                    std::optional<std::size_t> lines = {}) const;

    /// Returns the screen as all output has left it.
    [[nodiscard]] Screen screen() const;

    /// Returns what a terminal answers to the queries that end between two positions in the output.
    /// The first position must still be kept. Calls that go on where the last one ended read the
    /// output once.
    [[nodiscard]] std::string answers(Position from, Position until);

    /// Frees the memory that `answers` keeps to follow further output from.
    void forgetAnswers() { answering_.reset(); }

    /// Drops all output and frees the memory.
    void clear();

private:
    static constexpr std::size_t dropped = std::size_t{1} << 15; ///< at least, at once
    static constexpr std::size_t capacity = kept + dropped + maxRead;
    static constexpr std::size_t maxSizes = 256;

    /// A screen, and how far it has followed the output.
    struct Follower {
        Screen screen;
        Position position;
    };

    struct SizeChange {
        Position position;
        PtyFrame::Size size;
    };

    enum class Next { question, more }; ///< what a screen that has followed gets next

    [[nodiscard]] Follower followerAtBegin() const;
    [[nodiscard]] Position beginningOfLast(std::size_t lines) const;
    [[nodiscard]] bool asks(Position from, Position until) const;
    template<class Read>
    void readPieces(Position from, Position until, const Read& read) const;
    void showAnew(Start& start, std::optional<PtyFrame::Size> size, Screen::Part part) const;
    void followOutput(Follower& follower, Position until) const;
    void follow(Follower& follower, Position until, Next next = Next::question) const;
    void followToRest(Follower& follower) const;

    std::unique_ptr<std::uint8_t[]> memory_; ///< null before the first output
    Position begin_ = 0;
    Position end_ = 0;
    PtyFrame::Size firstSize_;
    std::vector<SizeChange> sizes_;       ///< that `behind_` has not followed
    std::unique_ptr<Follower> behind_;    ///< at `begin_`; some of its lines may wait
    std::unique_ptr<Follower> answering_; ///< with no cells: where `answers` has got to
};

} // namespace velmo
