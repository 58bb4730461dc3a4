#include "sessions/OutputLog.h"

#include <algorithm>

namespace velmo {

void OutputLog::resize(PtyFrame::Size size) {
    std::erase_if(sizes_, [this](const SizeChange& each) { return each.position == end_; });
    if (sizes_.size() == maxSizes)
        sizes_.erase(sizes_.begin());
    sizes_.push_back({.position = end_, .size = size});
}

std::span<std::uint8_t> OutputLog::room() {
    if (!memory_)
        memory_ = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
    if (end_ - begin_ > kept + dropped) {
        const Position until = end_ - kept;
        if (!behind_)
            behind_ = std::make_unique<Follower>(followerAtBegin());
        follow(*behind_, until, Next::more);
        if (answering_ && answering_->position < until)
            answering_.reset();
        std::erase_if(sizes_, [&](const SizeChange& each) { return each.position < until; });
        begin_ = until;
    }
    const auto offset = static_cast<std::size_t>(end_ % capacity);
    return {memory_.get() + offset, std::min(maxRead, capacity - offset)};
}

ByteView OutputLog::at(Position position, std::size_t max) const {
    const auto offset = static_cast<std::size_t>(position % capacity);
    const auto left = static_cast<std::size_t>(end_ - position);
    return {memory_.get() + offset, std::min({max, left, capacity - offset})};
}

OutputLog::Follower OutputLog::followerAtBegin() const {
    return behind_ ? *behind_ : Follower{.screen = Screen(firstSize_), .position = begin_};
}

/// Hands the output between two positions to a function, cut only where the memory wraps.
template<class Read>
void OutputLog::readPieces(Position from, Position until, const Read& read) const {
    while (from < until) {
        const ByteView piece = at(from, static_cast<std::size_t>(until - from));
        read(piece);
        from += piece.size();
    }
}

/// Has a screen follow the output up to a position, and no sizes.
void OutputLog::followOutput(Follower& follower, Position until) const {
    readPieces(follower.position, until,
               [&follower](ByteView piece) { follower.screen.followAhead(piece); });
    follower.position = std::max(follower.position, until);
}

/// Has a screen follow the output and the sizes up to a position. Where more follows, the screen
/// may be asked for nothing before that.
void OutputLog::follow(Follower& follower, Position until, Next next) const {
    for (const auto& [position, size] : sizes_) {
        if (position < follower.position)
            continue; // followed before
        if (position > until)
            break;
        followOutput(follower, position);
        follower.screen.resize(size);
    }
    followOutput(follower, until);
    if (next == Next::question)
        follower.screen.follow({});
}

/// Has a screen follow the output to the end of the piece under way.
void OutputLog::followToRest(Follower& follower) const {
    while (!follower.screen.isAtRest() && follower.position < end_)
        follow(follower, follower.position + 1);
}

OutputLog::Start OutputLog::replayStart(std::optional<PtyFrame::Size> size,
                                        std::optional<std::size_t> lines) const {
    const Position earliest = lines ? beginningOfLast(*lines) : begin_;
    Start start{.position = earliest, .isExact = true};
    if (earliest > 0 && memory_) {
        Follower first = followerAtBegin();
        follow(first, std::max(first.position, earliest));
        followToRest(first);
        const Screen& screen = first.screen;
        const auto part = earliest > begin_ ? Screen::Part::withoutMainRows : Screen::Part::all;
        start = {.position = first.position,
                 .sequences = screen.drawn(size, part),
                 .reportsFocus = screen.modes().reportsFocus(),
                 .isExact =
                     (part == Screen::Part::all || screen.isAlternate()) && screen.isWhole()};
    }
    showAnew(start, size, lines ? Screen::Part::withoutMainRows : Screen::Part::all);
    return start;
}

/// Has a replay show the screen once more where the program's terminal got its size, if that was
/// later and a terminal shows something else there: lines are broken anew and come back from above
/// when a terminal gets another size, and the replay before is written for the old one.
void OutputLog::showAnew(Start& start, std::optional<PtyFrame::Size> size,
                         Screen::Part part) const {
    if (sizes_.empty() || sizes_.back().position <= start.position)
        return;
    start.isExact = false;
    if (sizes_.back().size != size)
        return;
    Follower asDrawn = followerAtBegin();
    follow(asDrawn, sizes_.back().position);
    followToRest(asDrawn);
    const Screen& screen = asDrawn.screen;
    if (!screen.isAlternate() && (part != Screen::Part::all || !screen.isWhole()))
        return;
    Follower asReplayed{.screen = Screen(*size), .position = start.position};
    asReplayed.screen.follow(bytesOf(start.sequences));
    followOutput(asReplayed, asDrawn.position);
    asReplayed.screen.follow({});
    start.isExact = screen.isWhole();
    if (asReplayed.screen.drawn(size, part) == screen.drawn(size, part))
        return;
    start.anewAt = asDrawn.position;
    start.anew = screen.drawnAnew(screen.isWhole() ? part : Screen::Part::withoutMainRows);
}

/// Returns the position behind the line feed before so many lines; the first that is kept if there
/// are fewer.
OutputLog::Position OutputLog::beginningOfLast(std::size_t lines) const {
    for (Position position = end_; position > begin_; --position) {
        const bool isLineFeed =
            memory_[static_cast<std::size_t>((position - 1) % capacity)] == '\n';
        if (isLineFeed && lines-- <= 1)
            return position;
    }
    return begin_;
}

Screen OutputLog::screen() const {
    Follower follower = followerAtBegin();
    follow(follower, end_);
    return std::move(follower.screen);
}

/// Returns whether a query ends in the output between two positions.
bool OutputLog::asks(Position from, Position until) const {
    SequenceReader reader;
    const Position start = from - std::min<Position>(from - begin_, SequenceReader::maxSequence);
    readPieces(start, from, [&reader](ByteView piece) {
        reader.readSequences(piece, [](const SequenceReader::Sequence& /*before*/) {});
    });
    bool asks = false;
    readPieces(from, until, [&](ByteView piece) {
        reader.readSequences(piece, [&asks](const SequenceReader::Sequence& sequence) {
            constexpr std::string_view finals = "nc";
            asks = asks
                   || (sequence.kind == SequenceReader::Kind::csi
                       && finals.contains(sequence.text.back()));
        });
    });
    return asks;
}

std::string OutputLog::answers(Position from, Position until) {
    if (!asks(from, until))
        return "";
    if (!answering_ || answering_->position > from) {
        answering_ = std::make_unique<Follower>(followerAtBegin());
        follow(*answering_, from); // with the text, since another size moves the cursor with it
        answering_->screen.beginAnswering();
    }
    follow(*answering_, from);
    static_cast<void>(answering_->screen.takeAnswers());
    follow(*answering_, until);
    return answering_->screen.takeAnswers();
}

void OutputLog::clear() {
    memory_.reset();
    behind_.reset();
    answering_.reset();
    begin_ = end_;
}

} // namespace velmo
