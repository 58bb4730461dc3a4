#include "sessions/TerminalSession.h"

#include "core/terminal/Pty.h"
#include "core/terminal/PtyAttach.h"
#include "sessions/AttachMessages.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace velmo {

namespace {

/// Once this much output has been read, the viewers are sent it before more is read: a full frame.
constexpr std::size_t maxBurst = OutputLog::maxRead;

/// A read of fewer bytes than this has most likely got everything. Another read would only cost
/// time, and delay the echo of a key.
constexpr std::size_t littleOutput = 1024;

/// A program that has not read so much of what was typed gets no further answers to its queries.
constexpr std::size_t maxUnreadAnswers = 4096; // bytes

/// Ends a scrolling region that was set for another size, and leaves the cursor where it is.
constexpr std::string_view endRegion = "\0337\033[r\0338";

/// Returns what scrolls all that a terminal of this height shows down to the cursor's line off its
/// top, where the terminal keeps it, and puts the cursor there.
std::string scrollAway(PtyFrame::Size size) {
    return "\r" + std::string(static_cast<std::size_t>(size.rows), '\n') + "\033[H";
}

/// Sent before a replay to a terminal that shows an older state of the session.
const std::string clearScreen = std::string(PtyAttach::reset) + "\033[2J\033[H";

Bytes exitFrame(const Viewer& viewer, int code) {
    return viewer.isWindow() ? PtyAttach::exitFrame(code) : PtyFrame::exit(code);
}

} // namespace

TerminalSession::TerminalSession(Identity identity, std::shared_ptr<Program> program,
                                 std::optional<Transcript> transcript)
    : identity_(std::move(identity)),
      program_(std::move(program)),
      size_{.cols = identity_.request.cols, .rows = identity_.request.rows},
      log_(size_),
      transcript_(std::move(transcript)),
      lastOutput_(identity_.since),
      countChanged_(identity_.since) {
    program_->watch(true, false);
}

std::optional<SessionRefusal> TerminalSession::refusal() const {
    if (endedSince_)
        return SessionRefusal::ended;
    if (seats_.size() == maxViewers)
        return SessionRefusal::limit;
    return std::nullopt;
}

std::optional<std::uint32_t> TerminalSession::process() const {
    return program_ ? std::optional(program_->pid()) : std::nullopt;
}

std::set<SessionNumber> TerminalSession::shownIn() const {
    std::set<SessionNumber> all;
    for (const Seat& seat : seats_)
        all.insert(seat.admission.runsIn.begin(), seat.admission.runsIn.end());
    return all;
}

void TerminalSession::attach(std::unique_ptr<Viewer> viewer, Admission admission, SteadyTime now,
                             WallTime date) {
    viewer->tell(viewer->isWindow() ? PtyAttach::readyFrame(identity_.name, identity_.id)
                                    : PtyFrame::ready(program_->pid()));
    const bool isExact =
        viewer->replay(log_, surroundings(viewer->isWindow(), admission.size), admission.lines);
    const bool isAsDrawn = isExact && admission.size == size_;
    hadViewer_ = true;
    attend();
    seats_.push_back({.viewer = std::move(viewer),
                      .admission = std::move(admission),
                      .activity = ++activities_});
    noteDate(date);
    applySize();
    if (log_.end() > 0 && !isAsDrawn)
        redraw();
    update(now);
}

/// Returns what surrounds the first replay of a viewer. The first window of a session that nothing
/// is lost of shows the program as if it had been started there.
Viewer::Surroundings TerminalSession::surroundings(bool isWindow,
                                                   std::optional<PtyFrame::Size> size) const {
    if (log_.end() == 0)
        return {};
    const bool isAsBefore = size == size_;
    const bool beginsThere = isAsBefore && !hadViewer_ && log_.begin() == 0;
    const bool scrolls = isWindow && size && !beginsThere;
    return {.before = scrolls ? scrollAway(*size) : "",
            .after = std::string(isAsBefore ? "" : endRegion),
            .size = scrolls ? size : std::nullopt};
}

void TerminalSession::received(PeerId peer, ByteView bytes, SteadyTime now) {
    Seat* const seat = find(peer);
    if (seat == nullptr)
        return;
    auto inputs = seat->viewer->decode(bytes);
    if (inputs)
        std::ranges::move(*inputs, std::back_inserter(seat->inputs));
    else
        dismiss(*seat->viewer);
    update(now);
}

void TerminalSession::connectionLost(PeerId peer, SteadyTime now) {
    if (const Seat* const seat = find(peer))
        dismiss(*seat->viewer);
    update(now);
}

void TerminalSession::programReadable(SteadyTime now) {
    readProgram(now);
    update(now);
}

void TerminalSession::programEnded(std::int32_t waitStatus, SteadyTime now) {
    exitCode_ = Pty::exitCode(waitStatus);
    drainUntil_ = SteadyTime{now.seconds + drainPatience};
    programReadable(now);
}

void TerminalSession::readProgram(SteadyTime now) {
    std::size_t burst = 0;
    while (program_ && !outputIsOver_ && burst < maxBurst && !mustWait(now)) {
        const std::span<std::uint8_t> room = log_.room();
        const Program::Output output = program_->read(room);
        log_.commit(output.bytes);
        keep(room.first(output.bytes));
        answerQueries();
        if (auto notice = noticeReader_.read(room.first(output.bytes))) {
            isAttentionNew_ = true;
            if (!notice->empty())
                notice_ = *std::move(notice);
        }
        burst += output.bytes;
        outputIsOver_ = output.isOver;
        if (output.bytes < littleOutput)
            break;
    }
}

/// Adds output to the transcript. Where it can't be written, the session goes on without one.
void TerminalSession::keep(ByteView output) {
    if (!transcript_ || transcript_->add(output))
        return;
    transcript_.reset();
    hasLostTranscript_ = true;
}

/// Answers the queries that are sent to no viewer's terminal: all of them while no viewer may
/// answer, and those that were filtered out for the leader before its turn.
void TerminalSession::answerQueries() {
    const Seat* const first = leader();
    const OutputLog::Position from = std::max(answeredBut(first), log_.begin());
    const OutputLog::Position until =
        first != nullptr ? first->viewer->filteredUntil() : log_.end();
    if (from < until)
        answer(from, until);
    else if (first != nullptr)
        log_.forgetAnswers();
    for (const Seat& seat : seats_)
        answered_ = std::max(answered_, seat.viewer->answered());
}

void TerminalSession::answer(OutputLog::Position from, OutputLog::Position until) {
    if (sent_.size() <= maxUnreadAnswers)
        std::ranges::copy(log_.answers(from, until), std::back_inserter(sent_));
    answered_ = std::max(answered_, until);
}

/// Returns the position up to which queries are answered, by the host or by a viewer other than
/// this one.
OutputLog::Position TerminalSession::answeredBut(const Seat* one) const {
    OutputLog::Position answered = answered_;
    for (const Seat& seat : seats_) {
        if (&seat != one)
            answered = std::max(answered, seat.viewer->answersUntil(log_));
    }
    return answered;
}

/// Tells whether the program has to wait for a viewer that does not keep up.
bool TerminalSession::mustWait(SteadyTime now) {
    bool waits = false;
    for (Seat& seat : seats_) {
        const std::size_t behind = seat.viewer->behind(log_);
        if (behind < Viewer::caughtUp) {
            seat.isWaitedFor = true;
            seat.blockedSince.reset();
        } else if (seat.isWaitedFor && behind > Viewer::window) {
            if (!seat.blockedSince)
                seat.blockedSince = now;
            waits = true;
        }
    }
    return waits;
}

void TerminalSession::update(SteadyTime now) {
    isInputFull_ = false;
    typeSent();
    for (Seat& seat : seats_)
        carryOut(seat);
    applySize();
    if (exitCode_ && outputIsOver_)
        finish(now);
    const Seat* const first = leader();
    for (Seat& seat : seats_)
        show(seat, &seat == first, now);
    answerQueries(); // before `sweep`, since a viewer that leaves takes its positions with it
    sweep();
    answerQueries();
    typeSent();
    // After `sweep`, so that the program does not wait for a viewer that has left.
    if (program_ && !endedSince_)
        program_->watch(!outputIsOver_ && !mustWait(now), isInputFull_);
}

/// Carries out what the viewer has asked for, up to keys that the program does not read yet.
void TerminalSession::carryOut(Seat& seat) {
    while (!seat.inputs.empty()) {
        if (std::holds_alternative<viewer::Leave>(seat.inputs.front())) {
            seat.inputs.clear();
            attend();
            dismiss(*seat.viewer);
            return;
        }
        if (!carryOut(seat, seat.inputs.front())) {
            isInputFull_ = true;
            return;
        }
        seat.inputs.pop_front();
        seat.typed = 0;
    }
}

/// Returns false if part of the input remains to be done later.
bool TerminalSession::carryOut(Seat& seat, const ViewerInput& input) {
    if (!seat.admission.mayType) {
        look(seat, input);
        return true;
    }
    if (const auto* const signal = std::get_if<viewer::Signal>(&input)) {
        if (program_)
            program_->signalForeground(signal->number);
        return true;
    }
    seat.activity = ++activities_;
    attend();
    if (const auto* const resize = std::get_if<viewer::Resize>(&input)) {
        if (resize->size == size_)
            redraw();
        seat.admission.size = resize->size;
        return true;
    }
    return type(seat, std::get<viewer::Keys>(input).bytes);
}

/// Does what a viewer that may not type may ask for: a viewer that tells the same size twice wants
/// the screen drawn anew.
void TerminalSession::look(Seat& seat, const ViewerInput& input) {
    const auto* const resize = std::get_if<viewer::Resize>(&input);
    if (resize == nullptr)
        return;
    if (seat.admission.size == resize->size)
        redraw();
    seat.admission.size = resize->size;
}

/// Notes that a person looks at the session.
void TerminalSession::attend() {
    isAttentionNew_ = false;
    attentionSince_.reset();
    notice_.clear();
}

/// Types the keys of one frame, or the part that the program takes. The keys of a frame stay
/// together: while another viewer's are typed in part, these wait. Returns false if some remain.
bool TerminalSession::type(Seat& seat, ByteView keys) {
    if (!program_ || exitCode_)
        return true; // the program has ended and will not read them
    if (!mustLetOthersFinish(&seat))
        seat.typed += program_->write(keys.subspan(seat.typed));
    return seat.typed == keys.size();
}

/// Types what was sent, unless a viewer's keys are typed in part.
void TerminalSession::typeSent() {
    if (sent_.empty())
        return;
    if (program_ && !exitCode_) {
        if (!mustLetOthersFinish(nullptr))
            sentTyped_ += program_->write(ByteView(sent_).subspan(sentTyped_));
        if (sentTyped_ < sent_.size()) {
            isInputFull_ = true;
            return;
        }
    }
    sent_.clear();
    sentTyped_ = 0;
}

/// Tells whether keys of another viewer, or for a viewer those that were sent, are typed in part.
/// A null pointer stands for what was sent.
bool TerminalSession::mustLetOthersFinish(const Seat* typist) const {
    return (typist != nullptr && sentTyped_ > 0)
           || std::ranges::any_of(
               seats_, [typist](const Seat& seat) { return &seat != typist && seat.typed > 0; });
}

bool TerminalSession::send(ByteView keys, SteadyTime now) {
    if (!sent_.empty())
        return false;
    sent_.assign(keys.begin(), keys.end());
    update(now);
    return true;
}

void TerminalSession::detach(SteadyTime now) {
    for (const Seat& seat : seats_) {
        if (seat.viewer->isWindow())
            seat.viewer->tell(PtyAttach::errorFrame("detached"));
        static_cast<void>(seat.viewer->send(log_, std::nullopt));
        dismiss(*seat.viewer);
    }
    update(now);
}

void TerminalSession::show(Seat& seat, bool leads, SteadyTime now) {
    Viewer& viewer = *seat.viewer;
    const auto answersFrom = leads ? std::optional(answeredBut(&seat)) : std::nullopt;
    Viewer::Progress progress = viewer.send(log_, answersFrom);
    if (progress == Viewer::Progress::late) {
        viewer.replay(log_, {.before = clearScreen,
                             .after = std::string(seat.admission.size == size_ ? "" : endRegion),
                             .size = seat.admission.size});
        redraw();
        progress = viewer.send(log_, answersFrom);
    }
    if (progress == Viewer::Progress::done && endedSince_ && !seat.isTold) {
        seat.isTold = true;
        viewer.tell(exitFrame(viewer, *exitCode_));
        progress = viewer.send(log_, answersFrom);
    }
    const bool isOver = progress == Viewer::Progress::done && seat.isTold;
    if (progress == Viewer::Progress::gone || isOver)
        dismiss(viewer);
    else
        viewer.connection().watch(seat.inputs.empty(), progress == Viewer::Progress::waiting);
    if (seat.blockedSince && now - *seat.blockedSince >= Viewer::patience) {
        seat.isWaitedFor = false;
        seat.blockedSince.reset();
        viewer.keepFrame(log_);
    }
}

/// Makes a full-screen program draw anew: the size changes by a row and back, since a program is
/// told of its size only when that changes.
void TerminalSession::redraw() {
    if (!program_)
        return;
    PtyFrame::Size other = size_;
    other.rows += other.rows > 1 ? -1 : 1;
    program_->setSize(other);
    program_->setSize(size_);
}

/// Applies the size of the leader: of the viewers that have told their size, the one that attached,
/// typed or resized last.
void TerminalSession::applySize() {
    const Seat* const first = leader();
    if (first == nullptr || !first->admission.size || *first->admission.size == size_ || !program_)
        return;
    size_ = *first->admission.size;
    log_.resize(size_);
    program_->setSize(size_);
}

void TerminalSession::finish(SteadyTime now) {
    if (endedSince_)
        return;
    endedSince_ = now;
    transcript_.reset();
    drainUntil_.reset();
    program_->watch(false, false);
    // Processes that outlive the program are still to be ended. If none is left, the system may
    // soon give the program's number to another session, which must not get these signals.
    if (endDue_ && program_->signalAll(0))
        return;
    endDue_.reset();
    program_.reset();
}

void TerminalSession::end(SteadyTime now) {
    if (!endDue_)
        signalToEnd(now);
}

void TerminalSession::signalToEnd(SteadyTime now) {
    endDue_.reset();
    if (!program_)
        return;
    program_->signalAll(endSignals[endsTried_]);
    if (endsTried_ + 1 < endSignals.size()) {
        ++endsTried_;
        endDue_ = SteadyTime{now.seconds + endPatience};
    } else if (endedSince_) {
        program_.reset();
    }
}

std::optional<SteadyTime> TerminalSession::deadline() const {
    auto earliest = drainUntil_;
    const auto consider = [&](std::optional<SteadyTime> time) {
        if (time && (!earliest || *time < *earliest))
            earliest = time;
    };
    consider(endDue_);
    for (const Seat& seat : seats_)
        consider(seat.blockedSince.transform(
            [](SteadyTime since) { return SteadyTime{since.seconds + Viewer::patience}; }));
    return earliest;
}

void TerminalSession::timePasses(SteadyTime now) {
    if (endDue_ && *endDue_ <= now)
        signalToEnd(now);
    if (endedSince_ && now - *endedSince_ >= memory)
        std::ranges::for_each(seats_, [this](const Seat& seat) { dismiss(*seat.viewer); });
    if (drainUntil_ && *drainUntil_ <= now) {
        if (mustWait(now)) { // output may lie unread until a viewer catches up
            drainUntil_ = SteadyTime{now.seconds + drainPatience};
        } else {
            drainUntil_.reset();
            outputIsOver_ = true;
        }
    }
    update(now);
}

void TerminalSession::dismiss(const Viewer& viewer) {
    toDismiss_.push_back(viewer.id());
}

void TerminalSession::sweep() {
    for (const PeerId peer : std::exchange(toDismiss_, {})) {
        const Seat* const seat = find(peer);
        if (seat == nullptr)
            continue;
        // The host answers the queries that the viewer leaves unsent.
        answer(std::max(seat->viewer->answered(), log_.begin()), seat->viewer->answersUntil(log_));
        seat->viewer->connection().close();
        seats_.erase(seats_.begin() + (seat - seats_.data()));
        dismissed_.push_back(peer);
    }
    applySize();
    if (endedSince_ && seats_.empty())
        log_.clear();
}

TerminalSession::Seat* TerminalSession::find(PeerId peer) {
    const auto found =
        std::ranges::find(seats_, peer, [](const Seat& seat) { return seat.viewer->id(); });
    return found == seats_.end() ? nullptr : &*found;
}

/// Returns the viewer that decides the size and answers queries; null if none may.
const TerminalSession::Seat* TerminalSession::leader() const {
    const auto rank = [](const Seat& seat) {
        return std::tuple(seat.admission.mayType, seat.admission.size.has_value(), seat.activity);
    };
    const auto found = std::ranges::max_element(seats_, {}, rank);
    return found == seats_.end() || !found->admission.mayType ? nullptr : &*found;
}

void TerminalSession::noteDate(WallTime date) {
    if (std::exchange(dated_, log_.end()) != log_.end())
        lastOutput_ = date;
    if (std::exchange(isAttentionNew_, false))
        attentionSince_ = date;
    if (hadViewers_ != seats_.empty())
        return;
    hadViewers_ = !seats_.empty();
    countChanged_ = date;
}

SessionEntry TerminalSession::entry() const {
    SessionEntry entry{.id = identity_.id,
                       .name = identity_.name,
                       .program = identity_.request.argv.front(),
                       .folder = identity_.request.cwd,
                       .cols = size_.cols,
                       .rows = size_.rows,
                       .since = identity_.since.sinceEpoch,
                       .viewers = static_cast<int>(seats_.size()),
                       .bytesOut = log_.end(),
                       .idleSince = lastOutput_.sinceEpoch,
                       .exitCode = endedSince_ ? exitCode_ : std::nullopt};
    if (attentionSince_) {
        entry.attentionSince = attentionSince_->sinceEpoch;
        if (!notice_.empty())
            entry.notice = notice_;
    }
    (hadViewers_ ? entry.attachedSince : entry.detachedSince) = countChanged_.sinceEpoch;
    return entry;
}

} // namespace velmo
