#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/FrameHeader.h"

#include <cstddef>
#include <expected>
#include <optional>
#include <utility>
#include <vector>

namespace velmo {

/// Turns a byte stream, cut anywhere, into whole frames. A value: a copy decodes on its own.
///
/// What distinguishes one protocol from another are its `Rules`:
///
///     using Frame = ...;
///     using Error = ...;
///     /// The fault of a header, judged before any of the payload has to be there. It must bound
///     /// the length: that many bytes are then waited for and kept.
///     static std::optional<Error> faultOf(const FrameHeader& header);
///     static std::expected<Frame, Error> frame(const FrameHeader& header, ByteView payload);
template<class Rules>
class FrameDecoder {
public:
    using Frame = typename Rules::Frame;
    using Error = typename Rules::Error;

    /// Every frame that the input completes, in stream order. An error is final: it drops the
    /// frames decoded in the same call and whatever is buffered, and every later call answers it
    /// again without looking at the input. The stream is broken then; close it.
    [[nodiscard]] std::expected<std::vector<Frame>, Error> feed(ByteView input);

    /// Bytes received and not yet part of a frame; 0 after an error.
    [[nodiscard]] std::size_t buffered() const { return buffer_.size() - start_; }

private:
    /// Appends the whole frames at the front of `stream`; how many bytes they take.
    static std::expected<std::size_t, Error> take(ByteView stream, std::vector<Frame>& frames);

    void append(ByteView bytes) { buffer_.insert(buffer_.end(), bytes.begin(), bytes.end()); }

    void consume(std::size_t count);

    Bytes buffer_;
    std::size_t start_ = 0; ///< the first byte of `buffer_` that belongs to no frame yet
    std::optional<Error> failed_;
};

template<class Rules>
auto FrameDecoder<Rules>::feed(ByteView input) -> std::expected<std::vector<Frame>, Error> {
    if (failed_)
        return std::unexpected(*failed_);

    // With nothing left from before, frames are taken out of the input itself and only the rest of
    // it is copied into the buffer: the common case of a reader that keeps up.
    const bool direct = buffered() == 0;
    if (!direct)
        append(input);

    std::vector<Frame> frames;
    const auto taken = take(direct ? input : ByteView(buffer_).subspan(start_), frames);
    if (!taken) {
        failed_ = taken.error();
        buffer_ = {};
        start_ = 0;
        return std::unexpected(taken.error());
    }
    if (direct)
        append(input.subspan(*taken));
    else
        consume(*taken);
    return frames;
}

template<class Rules>
auto FrameDecoder<Rules>::take(ByteView stream, std::vector<Frame>& frames)
    -> std::expected<std::size_t, Error> {
    ByteView rest = stream;
    while (rest.size() >= FrameHeader::bytes) {
        const FrameHeader header = FrameHeader::read(rest);
        if (const auto fault = Rules::faultOf(header))
            return std::unexpected(*fault);
        const std::size_t size = FrameHeader::bytes + header.length;
        if (rest.size() < size)
            break;
        auto frame = Rules::frame(header, rest.subspan(FrameHeader::bytes, header.length));
        if (!frame)
            return std::unexpected(frame.error());
        frames.push_back(*std::move(frame));
        rest = rest.subspan(size);
    }
    return stream.size() - rest.size();
}

/// Erasing at every frame would cost quadratic time; once half of the buffer is used up, what is
/// moved is never more than what was consumed.
template<class Rules>
void FrameDecoder<Rules>::consume(std::size_t count) {
    start_ += count;
    if (start_ >= 1 && start_ >= buffer_.size() / 2) {
        buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_));
        start_ = 0;
    }
}

} // namespace velmo
