#pragma once

#include "lab/instruments/DecodeInSlices.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace velmo {

inline Bytes joined(std::initializer_list<ByteView> parts) {
    Bytes all;
    for (const ByteView part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// Expects an error at the last byte of each stream and not before. Frames that come before the
/// error in the same call are lost, and the bytes after it are not decoded.
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

} // namespace velmo
