#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/FrameHeader.h"

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <utility>
#include <vector>

namespace velmo {

/// Turns a byte stream, which arrives in slices that may end anywhere, into whole frames. A decoder
/// belongs to one stream; a copy of it goes on independently from the same place.
///
/// The `Rules` are what distinguishes one protocol from another:
///
///     using Frame = ...;     // owns its payload
///     using FrameView = ...; // looks at its payload, a `ByteView`, where that lies
///     using Error = ...;
///     /// Returns the fault of a header, if it has one; the payload may not have arrived yet. Must
///     /// refuse a length that is too large for memory, since room for the payload is made next.
///     static std::optional<Error> faultOf(const FrameHeader& header);
///     /// Returns true for the header of a frame that is sound with any payload. Neither `faultOf`
///     /// need then be asked, so that data frames, which make up most of a stream, cost little.
///     static bool isSoundData(const FrameHeader& header);
///     static FrameView view(std::uint8_t type, ByteView payload);
///     /// Returns the fault of a payload, if it has one; its header has passed.
///     static std::optional<Error> faultOf(const FrameView& frame);
///     /// Returns a frame that keeps `payload`, which has the bytes of the view, or its fault; its
///     /// header has passed.
///     static std::expected<Frame, Error> frame(const FrameView& view, Bytes payload);
template<class Rules>
class FrameDecoder {
public:
    using Frame = typename Rules::Frame;
    using FrameView = typename Rules::FrameView;
    using Error = typename Rules::Error;

    /// Calls `use` with a view of every frame that the input completes, in stream order. A payload
    /// that lies whole in the input is not copied. A view lives until `use` returns, and `use` must
    /// neither throw nor call this decoder. Every frame that the input completes is judged before
    /// the first call:
    ///
    ///     const auto fed = decoder.feed(bytes, [&](const PtyFrame::FrameView& frame) {
    ///         screen.show(frame.payload);
    ///     });
    ///     if (!fed)
    ///         close(fed.error());
    ///
    /// An error is final: `use` is not called, what is buffered is dropped, and every later call
    /// returns the same error without looking at its input. The caller then closes the stream.
    template<std::invocable<const FrameView&> Use>
    [[nodiscard]] std::expected<void, Error> feed(ByteView input, Use&& use);

    /// Does the same, and returns the frames, which own their payloads. `Rules::frame` reads each
    /// payload once.
    [[nodiscard]] std::expected<std::vector<Frame>, Error> feed(ByteView input);

    /// Returns the number of bytes received that are not yet part of a frame; 0 after an error.
    [[nodiscard]] std::size_t buffered() const { return headBytes_ + payload_.size(); }

private:
    /// Takes the rest of the frame that has begun from the input, and judges the header. Returns
    /// false if the input ends before the frame does.
    std::expected<bool, Error> complete(ByteView& input);

    /// Does the same, and moves the frame that it completes to the frames.
    std::expected<bool, Error> completeFrame(ByteView& input, std::vector<Frame>& frames);

    /// Takes the rest of the header from the input. Returns nothing until the header is whole.
    std::optional<FrameHeader> completeHeader(ByteView& input);

    /// Takes the rest of the payload from the input. Returns false until the payload is whole.
    bool completePayload(std::size_t length, ByteView& input);

    /// Returns the bytes of all whole frames that the input begins with, once it has judged them
    /// and the header behind them, if that is whole.
    static std::expected<ByteView, Error> judge(ByteView input);

    /// Moves the whole frames that the input begins with from the input to the frames, and judges
    /// the header behind them, if that is whole.
    static std::expected<void, Error> takeFrames(ByteView& input, std::vector<Frame>& frames);

    /// Keeps the input, which is the beginning of a frame. The header has been judged if it is
    /// whole.
    void keepBeginning(ByteView input);

    std::unexpected<Error> fail(Error error);

    // A payload is collected here, and a frame that owns its payload takes this memory over.
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
    if (headBytes_ > 0) {
        const auto whole = completeFrame(input, frames);
        if (!whole)
            return fail(whole.error());
        if (!*whole)
            return frames;
    }
    if (const auto taken = takeFrames(input, frames); !taken)
        return fail(taken.error());
    keepBeginning(input);
    return frames;
}

template<class Rules>
template<std::invocable<const typename Rules::FrameView&> Use>
auto FrameDecoder<Rules>::feed(ByteView input, Use&& use) -> std::expected<void, Error> {
    if (failed_)
        return std::unexpected(*failed_);

    const bool hasBegun = headBytes_ > 0;
    if (hasBegun) {
        const auto whole = complete(input);
        if (!whole)
            return fail(whole.error());
        if (!*whole)
            return {};
        if (const auto fault = Rules::faultOf(Rules::view(head_.front(), payload_)))
            return fail(*fault);
    }
    const auto judged = judge(input);
    if (!judged)
        return fail(judged.error());

    if (hasBegun) {
        use(Rules::view(head_.front(), payload_));
        headBytes_ = 0;
        payload_.clear();
    }
    input = input.subspan(judged->size());
    for (ByteView frames = *judged; !frames.empty();) {
        const std::uint8_t type = frames.front();
        const std::size_t length = FrameHeader::read(frames).length;
        const ByteView afterHeader = frames.subspan(FrameHeader::bytes);
        use(Rules::view(type, afterHeader.first(length)));
        frames = afterHeader.subspan(length);
    }
    keepBeginning(input);
    return {};
}

template<class Rules>
auto FrameDecoder<Rules>::judge(ByteView input) -> std::expected<ByteView, Error> {
    ByteView rest = input;
    while (rest.size() >= FrameHeader::bytes) {
        const auto header = FrameHeader::read(rest);
        const bool isSoundData = Rules::isSoundData(header);
        if (!isSoundData) {
            if (const auto fault = Rules::faultOf(header))
                return std::unexpected(*fault);
        }
        const ByteView afterHeader = rest.subspan(FrameHeader::bytes);
        if (afterHeader.size() < header.length)
            break;
        if (!isSoundData) {
            const ByteView payload = afterHeader.first(header.length);
            if (const auto fault = Rules::faultOf(Rules::view(header.type, payload)))
                return std::unexpected(*fault);
        }
        rest = afterHeader.subspan(header.length);
    }
    return input.first(input.size() - rest.size());
}

template<class Rules>
auto FrameDecoder<Rules>::complete(ByteView& input) -> std::expected<bool, Error> {
    const auto header = completeHeader(input);
    if (!header)
        return false;
    if (const auto fault = Rules::faultOf(*header))
        return std::unexpected(*fault);
    return completePayload(header->length, input);
}

template<class Rules>
auto FrameDecoder<Rules>::completeFrame(ByteView& input, std::vector<Frame>& frames)
    -> std::expected<bool, Error> {
    const auto whole = complete(input);
    if (!whole || !*whole)
        return whole;
    Bytes payload = std::exchange(payload_, {});
    const FrameView view = Rules::view(head_.front(), payload);
    auto frame = Rules::frame(view, std::move(payload)); // which moves no byte of the view
    if (!frame)
        return std::unexpected(frame.error());
    frames.push_back(*std::move(frame));
    headBytes_ = 0;
    return true;
}

template<class Rules>
auto FrameDecoder<Rules>::takeFrames(ByteView& input, std::vector<Frame>& frames)
    -> std::expected<void, Error> {
    while (input.size() >= FrameHeader::bytes) {
        const auto header = FrameHeader::read(input);
        if (const auto fault = Rules::faultOf(header))
            return std::unexpected(*fault);
        const ByteView afterHeader = input.subspan(FrameHeader::bytes);
        if (afterHeader.size() < header.length)
            break;
        const ByteView payload = afterHeader.first(header.length);
        auto frame =
            Rules::frame(Rules::view(header.type, payload), Bytes(payload.begin(), payload.end()));
        if (!frame)
            return std::unexpected(frame.error());
        frames.push_back(*std::move(frame));
        input = afterHeader.subspan(header.length);
    }
    return {};
}

template<class Rules>
void FrameDecoder<Rules>::keepBeginning(ByteView input) {
    if (const auto header = completeHeader(input))
        completePayload(header->length, input);
}

template<class Rules>
std::optional<FrameHeader> FrameDecoder<Rules>::completeHeader(ByteView& input) {
    const std::size_t count = std::min(head_.size() - headBytes_, input.size());
    std::copy_n(input.begin(), count, head_.begin() + static_cast<std::ptrdiff_t>(headBytes_));
    headBytes_ += count;
    input = input.subspan(count);
    return headBytes_ == head_.size() ? std::optional(FrameHeader::read(head_)) : std::nullopt;
}

template<class Rules>
bool FrameDecoder<Rules>::completePayload(std::size_t length, ByteView& input) {
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
