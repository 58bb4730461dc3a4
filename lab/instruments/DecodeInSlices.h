#pragma once

#include "core/support/Bytes.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <vector>

namespace velmo {

/// What a decoder made of a stream: frames, and where and how it failed if it did.
template<class Frame, class Error>
struct Decoded {
    std::vector<Frame> frames;
    std::optional<Error> error;
    std::size_t position = 0; ///< bytes fed by the end of the call that failed, or all of them
    std::size_t buffered = 0;
};

/// Feeds the stream in slices that end at the given positions (ascending) and at its end.
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

/// A cut after every byte: the finest slicing, which tells at which byte a fault is found.
inline std::vector<std::size_t> everyByte(ByteView stream) {
    std::vector<std::size_t> cuts;
    for (std::size_t cut = 1; cut < stream.size(); ++cut)
        cuts.push_back(cut);
    return cuts;
}

} // namespace velmo
