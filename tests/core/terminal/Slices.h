#pragma once

#include "tests/core/terminal/DecodeInSlices.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

namespace velmo {

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
