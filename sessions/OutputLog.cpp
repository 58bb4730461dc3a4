#include "sessions/OutputLog.h"

#include <algorithm>
#include <string_view>

namespace velmo {

std::span<std::uint8_t> OutputLog::room() {
    if (!memory_)
        memory_ = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
    while (end_ - begin_ > kept) {
        const ByteView oldest = at(begin_, static_cast<std::size_t>(end_ - begin_ - kept));
        modes_.follow(oldest);
        begin_ += oldest.size();
    }
    const auto offset = static_cast<std::size_t>(end_ % capacity);
    return {memory_.get() + offset, std::min(maxRead, capacity - offset)};
}

ByteView OutputLog::at(Position position, std::size_t max) const {
    const auto offset = static_cast<std::size_t>(position % capacity);
    const auto left = static_cast<std::size_t>(end_ - position);
    return {memory_.get() + offset, std::min({max, left, capacity - offset})};
}

OutputLog::Start OutputLog::replayStart(std::optional<std::size_t> lines) const {
    const Position earliest = lines ? beginningOfLast(*lines) : begin_;
    if (earliest == 0)
        return {.position = 0, .sequences = "", .reportsFocus = false};
    TerminalModes modes = modes_;
    Position position = begin_;
    while (position < end_) {
        const ByteView piece = at(position, kept);
        const std::size_t line = textOf(piece).find('\n');
        const bool endsLine = line != std::string_view::npos;
        const std::size_t length = endsLine ? line + 1 : piece.size();
        modes.follow(piece.first(length));
        position += length;
        if (endsLine && position >= earliest && modes.isAtRest())
            break;
    }
    return {
        .position = position, .sequences = modes.sequences(), .reportsFocus = modes.reportsFocus()};
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

void OutputLog::clear() {
    memory_.reset();
    begin_ = end_;
}

} // namespace velmo
