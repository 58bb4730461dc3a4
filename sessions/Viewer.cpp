#include "sessions/Viewer.h"

#include "sessions/AttachMessages.h"

#include <algorithm>
#include <utility>

namespace velmo {

namespace {

/// How much output is filtered at once: a reset of two bytes becomes many times as long.
constexpr std::size_t maxFiltered = std::size_t{1} << 14;

/// Returns false for a frame that a client must not send.
bool append(std::vector<ViewerInput>& inputs, PtyAttach::Frame frame) {
    if (auto* const keys = std::get_if<Bytes>(&frame)) {
        inputs.emplace_back(viewer::Keys{std::move(*keys)});
        return true;
    }
    const auto message =
        PtyAttach::clientMessage(std::get<PtyAttach::ControlObject>(frame).object());
    if (!message || std::holds_alternative<PtyAttach::client::Hello>(*message))
        return false;
    if (const auto* const resize = std::get_if<PtyAttach::client::Resize>(&*message))
        inputs.emplace_back(viewer::Resize{resize->size});
    if (std::holds_alternative<PtyAttach::client::Leave>(*message))
        inputs.emplace_back(viewer::Leave{});
    return true;
}

bool append(std::vector<ViewerInput>& inputs, PtyFrame::Frame frame) {
    switch (frame.kind) {
    case PtyFrame::Kind::data:
        inputs.emplace_back(viewer::Keys{std::move(frame.payload)});
        return true;
    case PtyFrame::Kind::resize:
        inputs.emplace_back(viewer::Resize{frame.size().value()});
        return true;
    case PtyFrame::Kind::signal:
        inputs.emplace_back(viewer::Signal{frame.signal().value()});
        return true;
    case PtyFrame::Kind::exit:
    case PtyFrame::Kind::ready:
        break;
    }
    return false;
}

} // namespace

Viewer::Viewer(PeerId id, std::shared_ptr<Connection> connection, ViewerWire wire)
    : id_(id), connection_(std::move(connection)), wire_(std::move(wire)) {
}

std::optional<std::vector<ViewerInput>> Viewer::decode(ByteView bytes) {
    return std::visit(
        [&](auto& decoder) -> std::optional<std::vector<ViewerInput>> {
            auto frames = decoder.feed(bytes);
            if (!frames)
                return std::nullopt;
            std::vector<ViewerInput> asked;
            for (auto& frame : *frames) {
                if (!append(asked, std::move(frame)))
                    return std::nullopt;
                auto* const keys =
                    asked.empty() ? nullptr : std::get_if<viewer::Keys>(&asked.back());
                if (keys != nullptr && ignoresNextFocus_ && dropsFocusReport(keys->bytes))
                    asked.pop_back();
            }
            return asked;
        },
        wire_);
}

/// Removes a focus report from the keys. Returns true if nothing else was typed.
bool Viewer::dropsFocusReport(Bytes& keys) {
    for (const std::string_view report : {"\033[I", "\033[O"}) {
        const auto found = std::ranges::search(keys, bytesOf(report));
        if (found.empty())
            continue;
        ignoresNextFocus_ = false;
        keys.erase(found.begin(), found.end());
        return keys.empty();
    }
    return false;
}

void Viewer::tell(ByteView frames) {
    own_.insert(own_.end(), frames.begin(), frames.end());
}

bool Viewer::replay(const OutputLog& log, Surroundings surroundings,
                    std::optional<std::size_t> lastLines) {
    OutputLog::Start start = log.replayStart(surroundings.size, lastLines);
    const std::string before = surroundings.before + start.sequences;
    afterReplay_ = std::move(surroundings.after);
    if (!before.empty())
        tell(PtyAttach::data(bytesOf(before)));
    position_ = start.position;
    frameEnd_ = start.position;
    anewAt_ = start.anewAt;
    anew_ = std::move(start.anew);
    replayedUntil_ = log.end();
    filter_ = ReplayFilter(start.reportsFocus);
    isFiltered_ = true;
    reportsFocus_ = false;
    return start.isExact;
}

Viewer::Progress Viewer::send(const OutputLog& log,
                              std::optional<OutputLog::Position> answersFrom) {
    while (true) {
        if (!sendOutput(log) || !sendOwn())
            return isGone_ ? Progress::gone : Progress::waiting;
        if (position_ < log.begin())
            return Progress::late;
        turn(answersFrom);
        if (!own_.empty())
            continue;
        if (position_ == log.end())
            return Progress::done;
        nextFrame(log, answersFrom);
    }
}

/// Ends the replay if it is over, and changes between filtered and unfiltered. A replay is
/// filtered, and so is live output unless the viewer answers. The change waits for the end of a
/// piece, so that neither cuts a sequence or a character.
void Viewer::turn(std::optional<OutputLog::Position> answersFrom) {
    if (!anew_.empty() && position_ == anewAt_)
        tell(PtyAttach::data(bytesOf(std::exchange(anew_, {}))));
    if (!isReplay() && !afterReplay_.empty())
        tell(PtyAttach::data(bytesOf(std::exchange(afterReplay_, {}))));
    filters_ = isReplay() || !answersFrom || position_ < *answersFrom;
    if (filter_.isAtRest()) {
        if (isFiltered_ && !filters_)
            answersSince_ = position_;
        isFiltered_ = filters_;
    }
    if (reportsFocus_ && !filter_.reportsFocus())
        setFocusReports(false);
    else if (!reportsFocus_ && filter_.reportsFocus() && !isFiltered_)
        setFocusReports(true);
}

void Viewer::setFocusReports(bool reports) {
    reportsFocus_ = reports;
    ignoresNextFocus_ = reports;
    tell(PtyAttach::data(bytesOf(reports ? "\033[?1004h" : "\033[?1004l")));
}

OutputLog::Position Viewer::answersUntil(const OutputLog& log) const {
    const bool isCut = !isFiltered_ && !filter_.isAtRest();
    if (!isCut || answersUntil_ < log.begin())
        return answersUntil_;
    const auto left = static_cast<std::size_t>(log.end() - answersUntil_);
    return answersUntil_ + filter_.lengthToRest(log.at(answersUntil_, left));
}

/// Sends the rest of the frame that lies in the log. Returns false if not all of it went.
bool Viewer::sendOutput(const OutputLog& log) {
    while (headerLeft_ > 0 || position_ < frameEnd_) {
        const auto header = ByteView(header_).last(headerLeft_);
        const ByteView output = log.at(position_, static_cast<std::size_t>(frameEnd_ - position_));
        const auto sent = connection_->send(std::array{header, output});
        isGone_ = !sent;
        if (!sent || *sent == 0)
            return false;
        const std::size_t ofHeader = std::min(*sent, headerLeft_);
        headerLeft_ -= ofHeader;
        position_ += *sent - ofHeader;
    }
    return true;
}

bool Viewer::sendOwn() {
    while (ownSent_ < own_.size()) {
        const auto sent = connection_->send(std::array{ByteView(own_).subspan(ownSent_)});
        isGone_ = !sent;
        if (!sent || *sent == 0)
            return false;
        ownSent_ += *sent;
    }
    own_.clear();
    ownSent_ = 0;
    return true;
}

/// Prepares the next frame of output.
void Viewer::nextFrame(const OutputLog& log, std::optional<OutputLog::Position> answersFrom) {
    OutputLog::Position until = isReplay() ? replayedUntil_ : log.end();
    if (answersFrom && position_ < *answersFrom)
        until = std::min(until, *answersFrom);
    if (!anew_.empty())
        until = anewAt_;
    const std::size_t piece = isFiltered_ ? maxFiltered : PtyAttach::maxData;
    const auto most = std::min<OutputLog::Position>(piece, until - position_);
    ByteView output = log.at(position_, static_cast<std::size_t>(most));
    if (isFiltered_ != filters_)
        output = output.first(filter_.lengthToRest(output));
    if (isFiltered_)
        filterFrame(output);
    else
        beginFrame(output);
}

void Viewer::beginFrame(ByteView output) {
    filter_.follow(output);
    reportsFocus_ = filter_.reportsFocus();
    header_ = FrameHeader::of(std::to_underlying(PtyAttach::FrameType::data), output.size());
    headerLeft_ = header_.size();
    frameEnd_ = position_ + output.size();
    answersUntil_ = frameEnd_;
}

void Viewer::filterFrame(ByteView output) {
    position_ += output.size();
    frameEnd_ = position_;
    Bytes shown;
    filter_.pass(output, shown);
    if (!shown.empty())
        tell(PtyAttach::data(shown));
}

void Viewer::keepFrame(const OutputLog& log) {
    if (headerLeft_ == 0 && position_ == frameEnd_)
        return;
    Bytes rest(header_.end() - static_cast<std::ptrdiff_t>(headerLeft_), header_.end());
    while (position_ < frameEnd_) {
        const ByteView output = log.at(position_, static_cast<std::size_t>(frameEnd_ - position_));
        rest.insert(rest.end(), output.begin(), output.end());
        position_ += output.size();
    }
    headerLeft_ = 0;
    own_.insert(own_.begin(), rest.begin(), rest.end());
}

} // namespace velmo
