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
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmo {

/// One program and those who watch it. Each call takes the time at which it happens; all of them
/// come on one thread.
class TerminalSession {
public:
    struct Identity {
        SessionNumber number{};
        std::string id; ///< as `PtyAttach::isSessionId` has it
        std::string name;
        SpawnRequest request;
        WallTime since;
    };

    static constexpr std::size_t maxViewers = 16;

    /// How long what other processes still write is shown after the program has ended.
    static constexpr double drainPatience = 1.0; ///< seconds

    /// How long a session is remembered, and those are served who have not read all, after its end.
    static constexpr double memory = 60.0; ///< seconds

    /// The signals that end a session, and how long each is given to do so.
    static constexpr auto endSignals = std::to_array<int>({1, 15, 9}); // hang-up, terminate, kill
    static constexpr double endPatience = 2.0;                         ///< seconds

    TerminalSession(Identity identity, std::shared_ptr<Program> program);

    [[nodiscard]] const Identity& identity() const { return identity_; }

    /// Says why nobody may join by this connection, if so.
    [[nodiscard]] std::optional<SessionRefusal> refusalOf(const Connection& connection) const;

    /// Lets a viewer see the session as it stands and follow it from now on.
    void attach(std::unique_ptr<Viewer> viewer, SteadyTime now, WallTime date);

    [[nodiscard]] std::size_t viewerCount() const { return viewers_.size(); }

    // What happened to a viewer, or to the program.
    void received(PeerId peer, ByteView bytes, SteadyTime now);

    void writable(SteadyTime now) { update(now); }

    void gone(PeerId peer, SteadyTime now);
    void programReadable(SteadyTime now);
    void programEnded(std::int32_t waitStatus, SteadyTime now);

    /// Ends the program and all that it has started: by the next of `endSignals` every
    /// `endPatience`.
    void end(SteadyTime now);

    /// Returns when `timePasses` is due, if it is at all.
    [[nodiscard]] std::optional<SteadyTime> deadline() const;
    void timePasses(SteadyTime now);

    /// Returns the viewers that have left since the last call; their connections are closed.
    [[nodiscard]] std::vector<PeerId> takeLeft() { return std::exchange(left_, {}); }

    /// Since when the session has ended; absent while it runs.
    [[nodiscard]] std::optional<SteadyTime> endedSince() const { return endedSince_; }

    [[nodiscard]] SessionEntry entry() const;

    /// Says when the last viewer came or left, which `entry` tells.
    void noteDate(WallTime date);

private:
    void update(SteadyTime now);
    void readProgram(SteadyTime now);
    bool mustWait(SteadyTime now);
    void obey(Viewer& viewer);
    bool obey(Viewer& viewer, const ViewerInput& input);
    bool type(Viewer& viewer, ByteView keys);
    void show(Viewer& viewer, bool answers, SteadyTime now);
    void redraw();
    void applySize();
    void finish(SteadyTime now);
    void signalToEnd(SteadyTime now);
    void leave(const Viewer& viewer);
    void sweep();
    [[nodiscard]] Viewer* find(PeerId peer) const;
    [[nodiscard]] Viewer* leader() const;

    Identity identity_;
    std::shared_ptr<Program> program_;
    OutputLog log_;
    std::vector<std::unique_ptr<Viewer>> viewers_;
    std::vector<PeerId> leaving_;
    std::vector<PeerId> left_;
    PtyFrame::Size size_;
    std::uint64_t activities_ = 0;
    bool outputIsOver_ = false;
    bool isInputFull_ = false;    ///< some viewer's keys wait for the program
    std::optional<int> exitCode_; ///< told once the output is over
    std::optional<SteadyTime> drainUntil_;
    std::optional<SteadyTime> endedSince_;
    std::size_t endsTried_ = 0; ///< of `endSignals`, the next
    std::optional<SteadyTime> endDue_;
    WallTime countChanged_; ///< when somebody came to an empty session, or the last one left
    bool hadViewers_ = false;
};

} // namespace velmo
