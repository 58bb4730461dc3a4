#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/AttachWire.h"
#include "core/terminal/FrameHeader.h"
#include "core/terminal/PtyFrame.h"
#include "core/terminal/ReplayFilter.h"
#include "sessions/Connection.h"
#include "sessions/OutputLog.h"
#include "sessions/Program.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace velmo {

/// What a viewer asks of its session.
namespace viewer {

struct Keys {
    Bytes bytes; ///< to type into the program
};

struct Resize {
    PtyFrame::Size size;
};

struct Signal {
    std::int32_t number;
};

struct Leave {};

} // namespace viewer

using ViewerInput = std::variant<viewer::Keys, viewer::Resize, viewer::Signal, viewer::Leave>;

/// The decoder for what a viewer sends: a terminal window speaks the frames of AttachWire.h, a
/// phone's bridge those of PtyFrame.h. Output is framed alike in both.
using AttachDecoder = PtyAttach::Decoder;
using StreamDecoder = PtyFrame::Decoder;
using ViewerWire = std::variant<AttachDecoder, StreamDecoder>;

/// The session's side of a viewer: how much of the output has been sent, and what is left to send.
///
/// Output is sent straight from the log, without a copy, behind a frame header that is kept here.
/// A copy is made only of output that has to be filtered, or that the log may drop before the frame
/// under way is sent whole: never of more than one frame's output at a time.
class Viewer {
public:
    /// How much output may wait for a viewer before the program has to wait too.
    static constexpr std::size_t window = std::size_t{256} << 10; ///< bytes

    /// A viewer with less output waiting than this has caught up: the program waits for it again.
    static constexpr std::size_t caughtUp = window / 2; ///< bytes

    /// How long a program waits for a viewer that does not read.
    static constexpr double patience = 5.0; ///< seconds

    Viewer(PeerId id, std::shared_ptr<Connection> connection, ViewerWire wire);

    [[nodiscard]] PeerId id() const { return id_; }

    [[nodiscard]] Connection& connection() const { return *connection_; }

    [[nodiscard]] bool isWindow() const { return std::holds_alternative<AttachDecoder>(wire_); }

    /// Reads what the peer has sent. Returns nothing if it is malformed, which ends the viewer.
    [[nodiscard]] std::optional<std::vector<ViewerInput>> decode(ByteView bytes);

    /// Queues frames to be sent after the output frame under way and before any further one.
    void tell(ByteView frames);

    /// What surrounds a replay: sequences for the viewer's terminal.
    struct Surroundings {
        std::string before;
        std::string after;
        std::optional<PtyFrame::Size> size; ///< of a terminal with its cursor at the top left then
    };

    /// Starts a replay: the output is sent from the log's `replayStart` for so many lines on,
    /// after the sequences that show the screen as it was there. The terminal makes no focus
    /// reports at this point. Returns whether a terminal of the program's size shows in the end
    /// what the program has drawn.
    bool replay(const OutputLog& log, Surroundings surroundings,
                std::optional<std::size_t> lastLines = {});

    enum class Progress {
        done,    ///< everything has been sent
        waiting, ///< the peer has to read first
        late,    ///< the log has dropped the output that is next: `replay` is due
        gone,    ///< the peer is gone
    };

    /// Sends as much as the connection takes. A session passes `answersFrom` for one of its viewers
    /// only: the terminal of that viewer answers the program's queries. After the replay, the
    /// viewer sends output unfiltered from the first piece on that begins at this position or
    /// later. The viewer then also has its terminal report the focus, if the program has asked for
    /// that. `decode` drops the report that the terminal makes at once, unless live output sets the
    /// mode.
    [[nodiscard]] Progress send(const OutputLog& log,
                                std::optional<OutputLog::Position> answersFrom);

    /// Returns the end of the output that was sent filtered. The viewer's terminal answers what
    /// comes after that.
    [[nodiscard]] OutputLog::Position filteredUntil() const {
        return isFiltered_ ? position_ : answersSince_;
    }

    /// Returns the end of the output that this viewer is sent unfiltered even if another one
    /// answers from now on: the end of the frame under way, and of the piece that the frame cuts.
    [[nodiscard]] OutputLog::Position answersUntil(const OutputLog& log) const;

    /// Returns the end of the output that the peer has been sent unfiltered.
    [[nodiscard]] OutputLog::Position answered() const {
        return std::min(position_, answersUntil_);
    }

    /// Returns how many bytes of the output have not been sent yet.
    [[nodiscard]] std::size_t behind(const OutputLog& log) const {
        return static_cast<std::size_t>(log.end() - position_);
    }

    /// Copies the unsent rest of the frame under way, so that the log may drop it.
    void keepFrame(const OutputLog& log);

private:
    bool sendOutput(const OutputLog& log);
    bool sendOwn();
    void turn(std::optional<OutputLog::Position> answersFrom);
    void setFocusReports(bool reports);
    void nextFrame(const OutputLog& log, std::optional<OutputLog::Position> answersFrom);

    [[nodiscard]] bool isReplay() const { return position_ < replayedUntil_; }

    bool dropsFocusReport(Bytes& keys);
    void beginFrame(ByteView output);
    void filterFrame(ByteView output);

    PeerId id_;
    std::shared_ptr<Connection> connection_;
    ViewerWire wire_;
    OutputLog::Position position_ = 0;      ///< of the next output to send
    OutputLog::Position frameEnd_ = 0;      ///< of the frame that is being sent from the log
    OutputLog::Position replayedUntil_ = 0; ///< output before this is replay, always filtered
    OutputLog::Position answersSince_ = 0;  ///< the output is unfiltered, if it is
    OutputLog::Position answersUntil_ = 0;  ///< the end of the last frame that is unfiltered
    std::array<std::uint8_t, FrameHeader::bytes> header_{}; ///< of that frame
    std::size_t headerLeft_ = 0;                            ///< bytes of the header to send
    Bytes own_;                                             ///< frames for this viewer alone
    std::size_t ownSent_ = 0;
    OutputLog::Position anewAt_ = 0; ///< where to send these sequences during the replay
    std::string anew_;
    std::string afterReplay_; ///< sequences to send when the replay is over
    ReplayFilter filter_;
    bool filters_ = true;           ///< `isFiltered_` becomes this when `filter_` is at rest
    bool isFiltered_ = true;        ///< changes only between two pieces
    bool reportsFocus_ = false;     ///< the viewer's terminal does
    bool ignoresNextFocus_ = false; ///< the terminal's next focus report answers us
    bool isGone_ = false;
};

} // namespace velmo
