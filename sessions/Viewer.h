#pragma once

#include "core/support/Bytes.h"
#include "core/support/Time.h"
#include "core/terminal/AttachWire.h"
#include "core/terminal/FrameHeader.h"
#include "core/terminal/PtyFrame.h"
#include "core/terminal/ReplayFilter.h"
#include "sessions/Connection.h"
#include "sessions/OutputLog.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
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

/// Which frames a viewer speaks: a terminal window those of AttachWire.h, a phone's bridge those of
/// PtyFrame.h. Output is framed alike in both.
using AttachDecoder = PtyAttach::Decoder;
using StreamDecoder = PtyFrame::Decoder;
using ViewerWire = std::variant<AttachDecoder, StreamDecoder>;

/// One who watches a session: how far it has been sent the output, what is left to send, and what
/// it has asked for that is not done yet.
///
/// It is sent output in frames that lie partly in the log and need no copy. Where output has to be
/// filtered, or the log is about to forget what a frame has promised, a copy is made; there is
/// never more than one frame of these.
class Viewer {
public:
    /// How much output may wait for a viewer before the program has to wait too.
    static constexpr std::size_t window = std::size_t{256} << 10; ///< bytes

    /// A viewer counts as having caught up when less waits for it.
    static constexpr std::size_t caughtUp = window / 2;

    /// How long a program waits for a viewer that does not read.
    static constexpr double patience = 5.0; ///< seconds

    Viewer(PeerId id, std::shared_ptr<Connection> connection, ViewerWire wire);

    [[nodiscard]] PeerId id() const { return id_; }

    [[nodiscard]] Connection& connection() const { return *connection_; }

    [[nodiscard]] bool isWindow() const { return std::holds_alternative<AttachDecoder>(wire_); }

    /// Reads what the peer has sent. Returns nothing if it is malformed, which ends the viewer.
    [[nodiscard]] std::optional<std::vector<ViewerInput>> decode(ByteView bytes);

    /// Queues frames behind the output that is being sent, before any more output.
    void tell(ByteView frames);

    /// Has the session shown from where a replay begins. `first` is sent before.
    void replay(const OutputLog& log, std::string_view first);

    enum class Progress {
        done,    ///< all has been sent
        waiting, ///< for the peer to read
        late,    ///< the log has dropped what would be next: `replay` is due
        gone,    ///< the peer
    };

    /// Sends as much as goes. Output is sent unfiltered to the viewer that answers for all.
    [[nodiscard]] Progress send(const OutputLog& log, bool answers);

    [[nodiscard]] std::size_t behind(const OutputLog& log) const {
        return static_cast<std::size_t>(log.end() - position_);
    }

    /// Lets the log go on without this viewer: what is missing of the current frame is copied.
    void stopWaitingFor(const OutputLog& log);

    // How it stands with the session, which looks after these.
    std::optional<PtyFrame::Size> size;     ///< of the viewer's window, once it has told
    std::uint64_t activity = 0;             ///< counts up with what anybody types or resizes
    std::deque<ViewerInput> inputs;         ///< not done yet
    std::size_t typed = 0;                  ///< bytes of the first of these that the program has
    bool isWaitedFor = true;                ///< the program waits for it
    std::optional<SteadyTime> blockedSince; ///< the program waits for it now
    bool isTold = false;                    ///< that the program has ended

private:
    bool sendOutput(const OutputLog& log);
    bool sendOwn();
    void nextFrame(const OutputLog& log, bool answers);
    void beginFrame(ByteView output);
    void filterFrame(ByteView output);

    PeerId id_;
    std::shared_ptr<Connection> connection_;
    ViewerWire wire_;
    OutputLog::Position position_ = 0;      ///< of the next output to send
    OutputLog::Position frameEnd_ = 0;      ///< of the frame that is being sent from the log
    OutputLog::Position replayedUntil_ = 0; ///< what is older is shown again, never answered
    std::array<std::uint8_t, FrameHeader::bytes> header_{}; ///< of that frame
    std::size_t headerLeft_ = 0;                            ///< bytes of it that are to be sent
    Bytes own_;                                             ///< frames of this viewer alone
    std::size_t ownSent_ = 0;
    ReplayFilter filter_;
    bool isFiltered_ = true; ///< or was, and stands within a piece of output
    bool isGone_ = false;
};

} // namespace velmo
