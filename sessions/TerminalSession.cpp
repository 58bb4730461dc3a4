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

/// Sent before a replay to a terminal that shows an older state of the session.
const std::string clearScreen = std::string(PtyAttach::reset) + "\033[2J\033[H";

Bytes exitFrame(const Viewer& viewer, int code) {
    return viewer.isWindow() ? PtyAttach::exitFrame(code) : PtyFrame::exit(code);
}

} // namespace

TerminalSession::TerminalSession(Identity identity, std::shared_ptr<Program> program)
    : identity_(std::move(identity)),
      program_(std::move(program)),
      size_{.cols = identity_.request.cols, .rows = identity_.request.rows},
      lastOutput_(identity_.since),
      countChanged_(identity_.since) {
    program_->watch(true, false);
}

std::optional<SessionRefusal> TerminalSession::refusal() const {
    if (endedSince_)
        return SessionRefusal::ended;
    if (viewers_.size() == maxViewers)
        return SessionRefusal::limit;
    return std::nullopt;
}

std::optional<std::uint32_t> TerminalSession::process() const {
    return program_ ? std::optional(program_->pid()) : std::nullopt;
}

std::set<SessionNumber> TerminalSession::shownIn() const {
    std::set<SessionNumber> all;
    for (const auto& viewer : viewers_)
        all.insert(viewer->runsIn.begin(), viewer->runsIn.end());
    return all;
}

void TerminalSession::attach(std::unique_ptr<Viewer> viewer, SteadyTime now, WallTime date) {
    viewer->tell(viewer->isWindow() ? PtyAttach::readyFrame(identity_.name, identity_.id)
                                    : PtyFrame::ready(program_->pid()));
    viewer->replay(log_, "", viewer->lines);
    viewer->activity = ++activities_;
    attend();
    viewers_.push_back(std::move(viewer));
    noteDate(date);
    applySize();
    if (log_.end() > 0)
        redraw();
    update(now);
}

void TerminalSession::received(PeerId peer, ByteView bytes, SteadyTime now) {
    Viewer* const viewer = find(peer);
    if (viewer == nullptr)
        return;
    auto inputs = viewer->decode(bytes);
    if (inputs)
        std::ranges::move(*inputs, std::back_inserter(viewer->inputs));
    else
        leave(*viewer);
    update(now);
}

void TerminalSession::gone(PeerId peer, SteadyTime now) {
    if (Viewer* const viewer = find(peer))
        leave(*viewer);
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

/// Tells whether the program has to wait for a viewer that does not keep up.
bool TerminalSession::mustWait(SteadyTime now) {
    bool waits = false;
    for (const auto& viewer : viewers_) {
        const std::size_t behind = viewer->behind(log_);
        if (behind < Viewer::caughtUp) {
            viewer->isWaitedFor = true;
            viewer->blockedSince.reset();
        } else if (viewer->isWaitedFor && behind > Viewer::window) {
            if (!viewer->blockedSince)
                viewer->blockedSince = now;
            waits = true;
        }
    }
    return waits;
}

void TerminalSession::update(SteadyTime now) {
    isInputFull_ = false;
    typeSent();
    for (const auto& viewer : viewers_)
        obey(*viewer);
    applySize();
    if (exitCode_ && outputIsOver_)
        finish(now);
    const Viewer* const first = leader();
    for (const auto& viewer : viewers_)
        show(*viewer, viewer.get() == first, now);
    sweep();
    // After `sweep`, so that the program does not wait for a viewer that has left.
    if (program_ && !endedSince_)
        program_->watch(!outputIsOver_ && !mustWait(now), isInputFull_);
}

/// Carries out what the viewer has asked for, up to keys that the program does not read yet.
void TerminalSession::obey(Viewer& viewer) {
    while (!viewer.inputs.empty()) {
        if (std::holds_alternative<viewer::Leave>(viewer.inputs.front())) {
            viewer.inputs.clear();
            attend();
            leave(viewer);
            return;
        }
        if (!obey(viewer, viewer.inputs.front())) {
            isInputFull_ = true;
            return;
        }
        viewer.inputs.pop_front();
        viewer.typed = 0;
    }
}

/// Returns false if part of the input remains to be done later.
bool TerminalSession::obey(Viewer& viewer, const ViewerInput& input) {
    if (!viewer.mayType) {
        look(viewer, input);
        return true;
    }
    if (const auto* const signal = std::get_if<viewer::Signal>(&input)) {
        if (program_)
            program_->signalForeground(signal->number);
        return true;
    }
    viewer.activity = ++activities_;
    attend();
    if (const auto* const resize = std::get_if<viewer::Resize>(&input)) {
        if (resize->size == size_)
            redraw();
        viewer.size = resize->size;
        return true;
    }
    return type(viewer, std::get<viewer::Keys>(input).bytes);
}

/// Does what a viewer that may not type may ask for: a viewer that tells the same size twice wants
/// the screen drawn anew.
void TerminalSession::look(Viewer& viewer, const ViewerInput& input) {
    const auto* const resize = std::get_if<viewer::Resize>(&input);
    if (resize == nullptr)
        return;
    if (viewer.size == resize->size)
        redraw();
    viewer.size = resize->size;
}

/// Notes that a person looks at the session.
void TerminalSession::attend() {
    isAttentionNew_ = false;
    attentionSince_.reset();
    notice_.clear();
}

/// Types the keys of one frame, or the part that the program takes. The keys of a frame stay
/// together: while another viewer's are typed in part, these wait. Returns false if some remain.
bool TerminalSession::type(Viewer& viewer, ByteView keys) {
    if (!program_ || exitCode_)
        return true; // the program has ended and will not read them
    const bool othersFirst =
        sentTyped_ > 0 || std::ranges::any_of(viewers_, [&](const auto& other) {
            return other.get() != &viewer && other->typed > 0;
        });
    if (!othersFirst)
        viewer.typed += program_->write(keys.subspan(viewer.typed));
    return viewer.typed == keys.size();
}

/// Types what was sent, unless a viewer's keys are typed in part.
void TerminalSession::typeSent() {
    if (sent_.empty())
        return;
    const bool othersFirst =
        std::ranges::any_of(viewers_, [](const auto& viewer) { return viewer->typed > 0; });
    if (program_ && !exitCode_ && !othersFirst)
        sentTyped_ += program_->write(ByteView(sent_).subspan(sentTyped_));
    if (program_ && !exitCode_ && sentTyped_ < sent_.size()) {
        isInputFull_ = true;
        return;
    }
    sent_.clear();
    sentTyped_ = 0;
}

bool TerminalSession::send(ByteView keys, SteadyTime now) {
    if (!sent_.empty())
        return false;
    sent_.assign(keys.begin(), keys.end());
    update(now);
    return true;
}

void TerminalSession::detach(SteadyTime now) {
    for (const auto& viewer : viewers_) {
        if (viewer->isWindow())
            viewer->tell(PtyAttach::errorFrame("detached"));
        static_cast<void>(viewer->send(log_, false));
        leave(*viewer);
    }
    update(now);
}

void TerminalSession::show(Viewer& viewer, bool answers, SteadyTime now) {
    Viewer::Progress progress = viewer.send(log_, answers);
    if (progress == Viewer::Progress::late) {
        viewer.replay(log_, clearScreen);
        redraw();
        progress = viewer.send(log_, answers);
    }
    if (progress == Viewer::Progress::done && endedSince_ && !viewer.isTold) {
        viewer.isTold = true;
        viewer.tell(exitFrame(viewer, *exitCode_));
        progress = viewer.send(log_, answers);
    }
    const bool isOver = progress == Viewer::Progress::done && viewer.isTold;
    if (progress == Viewer::Progress::gone || isOver)
        leave(viewer);
    else
        viewer.connection().watch(viewer.inputs.empty(), progress == Viewer::Progress::waiting);
    if (viewer.blockedSince && now - *viewer.blockedSince >= Viewer::patience)
        viewer.stopWaitingFor(log_);
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
    const Viewer* const first = leader();
    if (first == nullptr || !first->size || *first->size == size_ || !program_)
        return;
    size_ = *first->size;
    program_->setSize(size_);
}

void TerminalSession::finish(SteadyTime now) {
    if (endedSince_)
        return;
    endedSince_ = now;
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
    for (const auto& viewer : viewers_)
        consider(viewer->blockedSince.transform(
            [](SteadyTime since) { return SteadyTime{since.seconds + Viewer::patience}; }));
    return earliest;
}

void TerminalSession::timePasses(SteadyTime now) {
    if (endDue_ && *endDue_ <= now)
        signalToEnd(now);
    if (endedSince_ && now - *endedSince_ >= memory)
        std::ranges::for_each(viewers_, [this](const auto& viewer) { leave(*viewer); });
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

void TerminalSession::leave(const Viewer& viewer) {
    leaving_.push_back(viewer.id());
}

void TerminalSession::sweep() {
    for (const PeerId peer : std::exchange(leaving_, {})) {
        const auto found = std::ranges::find(viewers_, peer, &Viewer::id);
        if (found == viewers_.end())
            continue;
        (*found)->connection().close();
        viewers_.erase(found);
        left_.push_back(peer);
    }
    applySize();
    if (endedSince_ && viewers_.empty())
        log_.clear();
}

Viewer* TerminalSession::find(PeerId peer) const {
    const auto found = std::ranges::find(viewers_, peer, &Viewer::id);
    return found == viewers_.end() ? nullptr : found->get();
}

/// Returns the viewer that decides the size and answers queries; null if none may.
Viewer* TerminalSession::leader() const {
    const auto rank = [](const auto& viewer) {
        return std::tuple(viewer->mayType, viewer->size.has_value(), viewer->activity);
    };
    const auto found = std::ranges::max_element(viewers_, {}, rank);
    return found == viewers_.end() || !(*found)->mayType ? nullptr : found->get();
}

void TerminalSession::noteDate(WallTime date) {
    if (std::exchange(dated_, log_.end()) != log_.end())
        lastOutput_ = date;
    if (std::exchange(isAttentionNew_, false))
        attentionSince_ = date;
    if (hadViewers_ != viewers_.empty())
        return;
    hadViewers_ = !viewers_.empty();
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
                       .viewers = static_cast<int>(viewers_.size()),
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
