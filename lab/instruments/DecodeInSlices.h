#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/FrameDecoder.h"

#include <algorithm>
#include <cstddef>
#include <expected>
#include <iterator>
#include <optional>
#include <vector>

namespace velmo {

/// The outcome of decoding a stream: frames, and where and how the decoder failed, if it did.
template<class Frame, class Error>
struct Decoded {
    std::vector<Frame> frames;
    std::optional<Error> error;
    std::size_t position = 0; ///< bytes fed by the end of the call that failed, or all of them
    std::size_t buffered = 0;
};

template<class Decoder>
class ByViews;

/// A decoder that is asked for views, under the interface of one that is asked for frames. A call
/// that fails must yield no views; if it does, they are returned in place of the error.
template<class Rules>
class ByViews<FrameDecoder<Rules>> {
public:
    using Frame = typename Rules::Frame;
    using Error = typename Rules::Error;

    std::expected<std::vector<Frame>, Error> feed(ByteView input) {
        std::vector<Frame> frames;
        const auto fed = decoder_.feed(input, [&](const typename Rules::FrameView& view) {
            frames.push_back(
                Rules::frame(view, Bytes(view.payload.begin(), view.payload.end())).value());
        });
        if (!fed && frames.empty())
            return std::unexpected(fed.error());
        return frames;
    }

    [[nodiscard]] std::size_t buffered() const { return decoder_.buffered(); }

private:
    FrameDecoder<Rules> decoder_;
};

/// Feeds a decoder the stream in slices that end at the given positions, in ascending order, and at
/// the end of the stream. Stops at the first error.
template<class Decoder>
auto decodeInSlices(ByteView stream, const std::vector<std::size_t>& cuts) {
    Decoder decoder;
    Decoded<typename Decoder::Frame, typename Decoder::Error> decoded;
    std::vector<std::size_t> ends = cuts;
    ends.push_back(stream.size());
    for (const std::size_t end : ends) {
        auto frames = decoder.feed(stream.subspan(decoded.position, end - decoded.position));
        decoded.position = end;
        if (!frames) {
            decoded.error = frames.error();
            break;
        }
        std::ranges::move(*frames, std::back_inserter(decoded.frames));
    }
    decoded.buffered = decoder.buffered();
    return decoded;
}

/// Returns the finest slicing, a cut after every byte, which shows at which byte a fault is found.
inline std::vector<std::size_t> everyByte(ByteView stream) {
    std::vector<std::size_t> cuts;
    for (std::size_t cut = 1; cut < stream.size(); ++cut)
        cuts.push_back(cut);
    return cuts;
}

} // namespace velmo
