#pragma once

#include "core/support/Bytes.h"
#include "core/support/Time.h"
#include "core/terminal/SpawnRequest.h"
#include "sessions/OutputLog.h"
#include "sessions/Program.h"
#include "sessions/SessionCalls.h"
#include "sessions/Viewer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmo {

/// A program and the viewers that watch it. Calls take the time at which they happen, and all of
/// them come on one thread.
class TerminalSession {
public:
    struct Identity {
        SessionNumber number{};
        std::string id; ///< of the form that `PtyAttach::isSessionId` accepts
        std::string name;
        SpawnRequest request;
        WallTime since;
    };

    static constexpr std::size_t maxViewers = 16;

    /// How long the output of other processes is still shown after the program has ended.
    static constexpr double drainPatience = 1.0; ///< seconds

    /// How long after its end a session is remembered, and viewers may still read its output.
    static constexpr double memory = 60.0; ///< seconds

    /// The signals that end a session, and the time from one to the next.
    static constexpr auto endSignals = std::to_array<int>({1, 15, 9}); // hang-up, terminate, kill
    static constexpr double endPatience = 2.0;                         ///< seconds

    TerminalSession(Identity identity, std::shared_ptr<Program> program);

    [[nodiscard]] const Identity& identity() const { return identity_; }

    /// Returns why the peer of this connection may not join; absent if it may.
    [[nodiscard]] std::optional<SessionRefusal> refusalOf(const Connection& connection) const;

    /// Shows the session to a viewer: a replay first, then all further output. The size is that of
    /// the viewer's window, absent if the viewer has not told it yet.
    void attach(std::unique_ptr<Viewer> viewer, std::optional<PtyFrame::Size> size, SteadyTime now,
                WallTime date);

    [[nodiscard]] std::size_t viewerCount() const { return seats_.size(); }

    // Report events of a viewer or of the program.
    void received(PeerId peer, ByteView bytes, SteadyTime now);

    void writable(SteadyTime now) { update(now); }

    void gone(PeerId peer, SteadyTime now);
    void programReadable(SteadyTime now);
    void programEnded(std::int32_t waitStatus, SteadyTime now);

    /// Begins to end the program and all that it has started: sends the first of `endSignals` now,
    /// and the next one every `endPatience` while anything still runs. Once all were sent, another
    /// call sends the last one again.
    void end(SteadyTime now);

    /// Returns when `timePasses` is due next; absent if nothing waits for a time.
    [[nodiscard]] std::optional<SteadyTime> deadline() const;
    void timePasses(SteadyTime now);

    /// Returns the viewers that have left since the last call; their connections are closed.
    [[nodiscard]] std::vector<PeerId> takeLeft() { return std::exchange(left_, {}); }

    /// Returns when the session ended; absent while it runs.
    [[nodiscard]] std::optional<SteadyTime> endedSince() const { return endedSince_; }

    [[nodiscard]] SessionEntry entry() const;

    /// Takes the date for `entry` if, since the last call, the first viewer came or the last left.
    void noteDate(WallTime date);

private:
    /// A viewer, and what the session keeps for it.
    struct Seat {
        std::unique_ptr<Viewer> viewer;
        std::optional<PtyFrame::Size> size; ///< of the viewer's window, once the viewer has told it
        std::uint64_t activity = 0;         ///< greater than a viewer's that was active before
        std::deque<ViewerInput> inputs;     ///< not done yet
        std::size_t typed = 0;              ///< bytes of the first input that the program has got
        bool isWaitedFor = true;            ///< the program waits if this viewer falls behind
        std::optional<SteadyTime> blockedSince; ///< since when the program has waited for it
        bool isTold = false;                    ///< the viewer has been sent the exit code
    };

    [[nodiscard]] Viewer::Surroundings surroundings(bool isWindow,
                                                    std::optional<PtyFrame::Size> size) const;
    void update(SteadyTime now);
    void readProgram(SteadyTime now);
    bool mustWait(SteadyTime now);
    void obey(Seat& seat);
    bool obey(Seat& seat, const ViewerInput& input);
    bool type(Seat& seat, ByteView keys);
    void show(Seat& seat, bool answers, SteadyTime now);
    void redraw();
    void applySize();
    void finish(SteadyTime now);
    void signalToEnd(SteadyTime now);
    void leave(const Viewer& viewer);
    void sweep();
    [[nodiscard]] Seat* find(PeerId peer);
    [[nodiscard]] const Seat* leader() const;

    Identity identity_;
    std::shared_ptr<Program> program_;
    PtyFrame::Size size_;
    OutputLog log_;
    std::vector<Seat> seats_;
    std::vector<PeerId> leaving_;
    std::vector<PeerId> left_;
    std::uint64_t activities_ = 0;
    bool outputIsOver_ = false;
    bool isInputFull_ = false;    ///< keys of a viewer wait for the program
    std::optional<int> exitCode_; ///< sent to viewers once the output is over
    std::optional<SteadyTime> drainUntil_;
    std::optional<SteadyTime> endedSince_;
    std::size_t endsTried_ = 0; ///< the next of `endSignals`; the last one stays next
    std::optional<SteadyTime> endDue_;
    WallTime countChanged_;   ///< when the first viewer came, or the last one left
    bool hadViewers_ = false; ///< at the last `noteDate`
    bool hadViewer_ = false;  ///< ever
};

} // namespace velmo
