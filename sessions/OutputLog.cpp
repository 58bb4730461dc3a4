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
        if (behind().position < until)
            follow(*behind_, until);
        if (ahead_ && ahead_->position < until)
            ahead_.reset();
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

OutputLog::Follower& OutputLog::behind() {
    if (!behind_)
        behind_ =
            std::make_unique<Follower>(Follower{.screen = Screen(firstSize_), .position = begin_});
    return *behind_;
}

/// Has a screen follow the output and the sizes up to a position.
void OutputLog::follow(Follower& follower, Position until) const {
    const auto followOutput = [&](Position end) {
        while (follower.position < end) {
            const ByteView piece =
                at(follower.position, static_cast<std::size_t>(end - follower.position));
            follower.screen.follow(piece);
            follower.position += piece.size();
        }
    };
    for (const auto& [position, size] : sizes_) {
        if (position < follower.position)
            continue; // followed before
        if (position > until)
            break;
        followOutput(position);
        follower.screen.resize(size);
    }
    followOutput(until);
}

OutputLog::Start OutputLog::replayStart(std::optional<PtyFrame::Size> size) {
    if (begin_ == 0 || !memory_)
        return {.position = begin_, .sequences = "", .reportsFocus = false};
    Follower& start = behind();
    while (!start.screen.isAtRest() && start.position < end_)
        follow(start, start.position + 1);
    return {.position = start.position,
            .sequences = start.screen.drawn(size),
            .reportsFocus = start.screen.modes().reportsFocus()};
}

const Screen& OutputLog::screenAt(Position position) {
    if (!ahead_)
        ahead_ = std::make_unique<Follower>(
            behind_ ? *behind_ : Follower{.screen = Screen(firstSize_), .position = begin_});
    follow(*ahead_, position);
    return ahead_->screen;
}

void OutputLog::clear() {
    memory_.reset();
    behind_.reset();
    ahead_.reset();
    begin_ = end_;
}

} // namespace velmo
