#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/FrameHeader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <utility>
#include <vector>

namespace velmo {

/// Turns a byte stream, which arrives in slices that may end anywhere, into whole frames. A decoder
/// belongs to one stream. It can be copied, and the copy goes on by itself.
///
/// The `Rules` are what distinguishes one protocol from another:
///
///     using Frame = ...;
///     using Error = ...;
///     /// Returns the fault of a header, if it has one, before any of the payload has to be there.
///     /// It must refuse lengths for which there is no memory: room for the payload is made next.
///     static std::optional<Error> faultOf(const FrameHeader& header);
///     /// Makes a frame of a header without fault and a payload of its length.
///     static std::expected<Frame, Error> frame(const FrameHeader& header, Bytes payload);
template<class Rules>
class FrameDecoder {
public:
    using Frame = typename Rules::Frame;
    using Error = typename Rules::Error;

    /// Returns every frame that the input completes, in stream order. An error is final: frames
    /// decoded in the same call and whatever is buffered are dropped, and every later call returns
    /// the same error without looking at its input. The caller then closes the stream.
    [[nodiscard]] std::expected<std::vector<Frame>, Error> feed(ByteView input);

    /// Returns the number of bytes received that are not yet part of a frame; 0 after an error.
    [[nodiscard]] std::size_t buffered() const { return headBytes_ + payload_.size(); }

private:
    /// Moves what is missing of the header from the input. Returns nothing until it is whole.
    std::optional<FrameHeader> takeHeader(ByteView& input);

    /// Moves what is missing of the payload from the input. Returns false until it is whole.
    bool takePayload(std::size_t length, ByteView& input);

    std::unexpected<Error> fail(Error error);

    // A payload is collected in the memory that its frame is going to keep.
    std::array<std::uint8_t, FrameHeader::bytes> head_{};
    std::size_t headBytes_ = 0;
    Bytes payload_;
    std::optional<Error> failed_;
};

template<class Rules>
auto FrameDecoder<Rules>::feed(ByteView input) -> std::expected<std::vector<Frame>, Error> {
    if (failed_)
        return std::unexpected(*failed_);

    std::vector<Frame> frames;
    while (const auto header = takeHeader(input)) {
        if (const auto fault = Rules::faultOf(*header))
            return fail(*fault);
        if (!takePayload(header->length, input))
            break;
        auto frame = Rules::frame(*header, std::exchange(payload_, {}));
        headBytes_ = 0;
        if (!frame)
            return fail(frame.error());
        frames.push_back(*std::move(frame));
    }
    return frames;
}

template<class Rules>
std::optional<FrameHeader> FrameDecoder<Rules>::takeHeader(ByteView& input) {
    const std::size_t count = std::min(head_.size() - headBytes_, input.size());
    std::copy_n(input.begin(), count, head_.begin() + static_cast<std::ptrdiff_t>(headBytes_));
    headBytes_ += count;
    input = input.subspan(count);
    return headBytes_ == head_.size() ? std::optional(FrameHeader::read(head_)) : std::nullopt;
}

template<class Rules>
bool FrameDecoder<Rules>::takePayload(std::size_t length, ByteView& input) {
    const ByteView part = input.first(std::min(length - payload_.size(), input.size()));
    payload_.reserve(length);
    payload_.insert(payload_.end(), part.begin(), part.end());
    input = input.subspan(part.size());
    return payload_.size() == length;
}

template<class Rules>
auto FrameDecoder<Rules>::fail(Error error) -> std::unexpected<Error> {
    failed_ = error;
    headBytes_ = 0;
    payload_ = {};
    return std::unexpected(error);
}

} // namespace velmo
