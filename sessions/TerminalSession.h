#pragma once

#include "core/support/Bytes.h"
#include "core/support/Time.h"
#include "core/terminal/SequenceReader.h"
#include "core/terminal/SpawnRequest.h"
#include "sessions/NoticeReader.h"
#include "sessions/OutputLog.h"
#include "sessions/Program.h"
#include "sessions/SessionCalls.h"
#include "sessions/Transcript.h"
#include "sessions/Viewer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <set>
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

    TerminalSession(Identity identity, std::shared_ptr<Program> program,
                    std::optional<Transcript> transcript = {});

    [[nodiscard]] const Identity& identity() const { return identity_; }

    /// Returns why no further viewer may join; absent if one may.
    [[nodiscard]] std::optional<SessionRefusal> refusal() const;

    /// Returns the process id of the program; absent once its terminal is closed.
    [[nodiscard]] std::optional<std::uint32_t> process() const;

    /// Returns the sessions in which this one is shown: those that its viewers run in.
    [[nodiscard]] std::set<SessionNumber> shownIn() const;

    /// What a viewer is admitted with.
    struct Admission {
        std::optional<PtyFrame::Size> size; ///< of the viewer's window, once the viewer has told it
        std::optional<std::size_t> lines;   ///< of the first replay; absent: all that is kept
        bool mayType = true;                ///< and decide the size, and answer queries
        std::vector<SessionNumber> runsIn;  ///< the sessions that the viewer's process runs in
    };

    /// Shows the session to a viewer: a replay first, then all further output.
    void attach(std::unique_ptr<Viewer> viewer, Admission admission, SteadyTime now, WallTime date);

    [[nodiscard]] std::size_t viewerCount() const { return seats_.size(); }

    // Report events of a viewer or of the program.
    void received(PeerId peer, ByteView bytes, SteadyTime now);

    void writable(SteadyTime now) { update(now); }

    void connectionLost(PeerId peer, SteadyTime now);
    void programReadable(SteadyTime now);
    void programEnded(std::int32_t waitStatus, SteadyTime now);

    /// Types keys that come from no viewer. Returns false, and types none of them, while the
    /// program has not read those of an earlier call.
    [[nodiscard]] bool send(ByteView keys, SteadyTime now);

    /// Makes every viewer leave, and tells windows that they were detached.
    void detach(SteadyTime now);

    /// Begins to end the program and all that it has started: sends the first of `endSignals` now,
    /// and the next one every `endPatience` while anything still runs. Once all were sent, another
    /// call sends the last one again.
    void end(SteadyTime now);

    /// Returns when `timePasses` is due next; absent if nothing waits for a time.
    [[nodiscard]] std::optional<SteadyTime> deadline() const;
    void timePasses(SteadyTime now);

    /// Returns the viewers that have left since the last call; their connections are closed.
    [[nodiscard]] std::vector<PeerId> takeDismissed() { return std::exchange(dismissed_, {}); }

    /// Returns when the session ended; absent while it runs.
    [[nodiscard]] std::optional<SteadyTime> endedSince() const { return endedSince_; }

    [[nodiscard]] SessionEntry entry() const;

    /// Returns what the program shows, as far as its output has been read.
    [[nodiscard]] Screen screen() const { return log_.screen(); }

    /// Tells whether the transcript has ended before the session did since the last call, because
    /// it could not be written.
    [[nodiscard]] bool takeTranscriptLoss() { return std::exchange(hasLostTranscript_, false); }

    /// Takes the date for `entry` of what has happened since the last call: the first viewer came
    /// or the last one left, the program wrote, rang the bell or sent a notice.
    void noteDate(WallTime date);

private:
    /// A viewer, and what the session keeps for it.
    struct Seat {
        std::unique_ptr<Viewer> viewer;
        Admission admission;
        std::uint64_t activity = 0;     ///< greater than a viewer's that was active before
        std::deque<ViewerInput> inputs; ///< not done yet
        std::size_t typed = 0;          ///< bytes of the first input that the program has got
        bool isWaitedFor = true;        ///< the program waits if this viewer falls behind
        std::optional<SteadyTime> blockedSince; ///< since when the program has waited for it
        bool isTold = false;                    ///< the viewer has been sent the exit code
    };

    [[nodiscard]] Viewer::Surroundings surroundings(bool isWindow,
                                                    std::optional<PtyFrame::Size> size) const;
    void update(SteadyTime now);
    void readProgram(SteadyTime now);
    void keep(ByteView output);
    void answerQueries();
    void answer(OutputLog::Position from, OutputLog::Position until);
    [[nodiscard]] OutputLog::Position answeredBut(const Seat* one) const;
    bool mustWait(SteadyTime now);
    void carryOut(Seat& seat);
    bool carryOut(Seat& seat, const ViewerInput& input);
    void look(Seat& seat, const ViewerInput& input);
    bool type(Seat& seat, ByteView keys);
    void typeSent();
    [[nodiscard]] bool mustLetOthersFinish(const Seat* typist) const;
    void show(Seat& seat, bool leads, SteadyTime now);
    void redraw();
    void applySize();
    void finish(SteadyTime now);
    void signalToEnd(SteadyTime now);
    void dismiss(const Viewer& viewer);
    void sweep();
    [[nodiscard]] Seat* find(PeerId peer);
    [[nodiscard]] const Seat* leader() const;
    void attend();

    Identity identity_;
    std::shared_ptr<Program> program_;
    PtyFrame::Size size_;
    OutputLog log_;
    std::optional<Transcript> transcript_; ///< until it can't be written, or the session ends
    bool hasLostTranscript_ = false;       ///< since the last `takeTranscriptLoss`
    std::vector<Seat> seats_;
    std::vector<PeerId> toDismiss_;
    std::vector<PeerId> dismissed_;
    std::uint64_t activities_ = 0;
    bool outputIsOver_ = false;
    Bytes sent_;                  ///< keys from no viewer that the program has not got yet,
                                  ///<   and answers to its queries
    std::size_t sentTyped_ = 0;   ///< bytes of these that it has got
    bool isInputFull_ = false;    ///< keys of a viewer wait for the program
    std::optional<int> exitCode_; ///< sent to viewers once the output is over
    std::optional<SteadyTime> drainUntil_;
    std::optional<SteadyTime> endedSince_;
    std::size_t endsTried_ = 0; ///< the next of `endSignals`; the last one stays next
    std::optional<SteadyTime> endDue_;
    OutputLog::Position answered_ = 0; ///< by the host, or sent to a viewer that answers
    NoticeReader noticeReader_;
    bool isAttentionNew_ = false; ///< since the last date
    std::optional<WallTime> attentionSince_;
    std::string notice_;            ///< empty after bells alone
    OutputLog::Position dated_ = 0; ///< the output's end at the last date
    WallTime lastOutput_;
    WallTime countChanged_;   ///< when the first viewer came, or the last one left
    bool hadViewers_ = false; ///< at the last `noteDate`
    bool hadViewer_ = false;  ///< ever
};

} // namespace velmo
