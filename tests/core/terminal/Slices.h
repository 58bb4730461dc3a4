#pragma once

#include "lab/instruments/DecodeInSlices.h"
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <initializer_list>
#include <span>

namespace velmo {

inline Bytes joined(std::initializer_list<ByteView> parts) {
    Bytes all;
    for (const ByteView part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// Each stream is faulty with its last byte and not before. Also: what came before in the same call
/// is lost, and nothing is heard of what follows.
template<class Decoder>
void expectFaults(typename Decoder::Error error, const Bytes& good,
                  const std::vector<Bytes>& streams) {
    for (const Bytes& faulty : streams) {
        SCOPED_TRACE(testing::PrintToString(faulty));
        const auto alone = decodeInSlices<Decoder>(faulty, everyByte(faulty));
        EXPECT_EQ(alone.error, error);
        EXPECT_EQ(alone.position, faulty.size());

        Decoder decoder;
        for (const Bytes& input : {joined({good, faulty, good}), good, Bytes()}) {
            EXPECT_EQ(decoder.feed(input).error(), error);
            EXPECT_EQ(decoder.buffered(), 0U);
        }
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
        // Found with the slice that holds the byte; that slice's frames are lost.
        const auto end = std::ranges::lower_bound(some, finest.position);
        RC_ASSERT(sliced.position == (end == some.end() ? stream.size() : *end));
        RC_ASSERT(sliced.error == finest.error);
        RC_ASSERT(sliced.buffered == finest.buffered);
        RC_ASSERT(sliced.frames.size() <= finest.frames.size());
        RC_ASSERT((sliced.error || sliced.frames.size() == finest.frames.size()));
        RC_ASSERT(std::ranges::equal(
            sliced.frames, std::span(finest.frames).first(sliced.frames.size()), {}, told, told));
    }
}

} // namespace velmo
