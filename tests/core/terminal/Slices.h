#pragma once

#include "core/support/Bytes.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cstddef>
#include <expected>
#include <functional>
#include <iterator>
#include <optional>
#include <span>
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

template<class Decoder>
struct Fault {
    Bytes stream;
    typename Decoder::Error error;
    std::size_t foundAt; ///< bytes until it is found
};

/// Also: what came before in the same call is lost, and nothing is heard of what follows.
template<class Decoder>
void expectFault(const Fault<Decoder>& fault, const Bytes& good) {
    SCOPED_TRACE(testing::PrintToString(fault.stream));
    const auto alone = decodeInSlices<Decoder>(fault.stream, everyByte(fault.stream));
    EXPECT_EQ(alone.error, fault.error);
    EXPECT_EQ(alone.position, fault.foundAt);

    Decoder decoder;
    Bytes stream = good;
    stream.insert(stream.end(), fault.stream.begin(), fault.stream.end());
    stream.insert(stream.end(), good.begin(), good.end());
    for (const ByteView input : {ByteView(stream), ByteView(good), ByteView()}) {
        const auto frames = decoder.feed(input);
        ASSERT_FALSE(frames);
        EXPECT_EQ(frames.error(), fault.error);
        EXPECT_EQ(decoder.buffered(), 0U);
    }
}

/// However the stream is cut: the same frames, and the same error at the same place. `told` makes
/// something comparable of a frame.
template<class Decoder, class Tell>
void assertSlicingChangesNothing(ByteView stream, const Tell& told) {
    auto cuts = *rc::gen::container<std::vector<std::size_t>>(
        rc::gen::inRange<std::size_t>(0, stream.size() + 1));
    std::ranges::sort(cuts);
    const auto finest = decodeInSlices<Decoder>(stream, everyByte(stream));
    for (const auto& some : {cuts, std::vector<std::size_t>()}) {
        const auto sliced = decodeInSlices<Decoder>(stream, some);
        RC_ASSERT(sliced.error == finest.error);
        RC_ASSERT(sliced.buffered == finest.buffered);
        RC_ASSERT(sliced.frames.size() <= finest.frames.size());
        RC_ASSERT(std::ranges::equal(
            sliced.frames, std::span(finest.frames).first(sliced.frames.size()), {}, told, told));
        if (!finest.error) {
            RC_ASSERT(sliced.frames.size() == finest.frames.size());
            continue;
        }
        // Found with the slice that holds the byte; that slice's frames are lost.
        const auto end = std::ranges::lower_bound(some, finest.position);
        RC_ASSERT(sliced.position == (end == some.end() ? stream.size() : *end));
    }
}

} // namespace velmo
