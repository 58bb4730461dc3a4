#include "core/terminal/PtyFrame.h"

#include "tests/core/terminal/Slices.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using namespace PtyFrame;
using testing::ElementsAre;

TEST(PtyFrame, EncodesNetworkOrder) {
    EXPECT_THAT(PtyFrame::exit(INT32_MIN), ElementsAre(3, 0, 0, 0, 4, 0x80, 0, 0, 0));
    EXPECT_THAT(ready(0x89ABCDEF), ElementsAre(5, 0, 0, 0, 4, 0x89, 0xAB, 0xCD, 0xEF));
    EXPECT_THAT(*resize(1000, 500), ElementsAre(2, 0, 0, 0, 4, 3, 0xE8, 1, 0xF4));
    EXPECT_THAT(*encode(Kind::signal, Bytes{9}), ElementsAre(4, 0, 0, 0, 1, 9)); // judged by length
}

TEST(PtyFrame, ASizeIsBounded) {
    const std::uint16_t edges[] = {0, 1, 500, 501, 1000, 1001, 65535};
    for (const std::uint16_t cols : edges) {
        for (const std::uint16_t rows : edges) {
            const bool valid = cols >= 1 && cols <= 1000 && rows >= 1 && rows <= 500;
            EXPECT_EQ(resize(cols, rows).has_value(), valid) << cols << " x " << rows;
        }
    }
    EXPECT_FALSE(validSize(-1, 10) || validSize(10, -500));
}

TEST(PtyFrame, EncodesAPayloadOfTheRightLengthOnly) {
    for (std::size_t size = 0; size < 6; ++size) {
        EXPECT_EQ(encode(Kind::signal, Bytes(size)).has_value(), size == 1) << size;
        for (const Kind kind : {Kind::resize, Kind::exit, Kind::ready})
            EXPECT_EQ(encode(kind, Bytes(size)).has_value(), size == 4) << size;
    }
    EXPECT_FALSE(encode(Kind::data, Bytes(maxPayload + 1)));
}

TEST(PtyFrame, CutsDataIntoTheLongestFrames) {
    Bytes bytes(maxPayload + 1, 'x');
    bytes.back() = 'y';
    const ByteView most = ByteView(bytes).first(maxPayload);
    EXPECT_TRUE(PtyFrame::data(most) == encode(Kind::data, most));
    EXPECT_TRUE(PtyFrame::data(bytes) == joined({PtyFrame::data(most), Bytes{1, 0, 0, 0, 1, 'y'}}));
    EXPECT_LE(PtyFrame::data(bytes).capacity(), bytes.size() + 2 * headerBytes);
    EXPECT_EQ(PtyFrame::data({}), encode(Kind::data, {}));
}

TEST(PtyFrame, ReadsValuesOfTheirOwnKindAndLengthOnly) {
    EXPECT_EQ((Frame{Kind::resize, {0, 80, 1, 24}}.size()), (Size{80, 280}));
    EXPECT_FALSE((Frame{Kind::resize, {0, 80, 1}}.size()) || (Frame{Kind::exit, Bytes(4)}.size()));
    for (int code = 0; code < 256; ++code) {
        const bool known = code == 1 || code == 2 || code == 15;
        const auto byte = static_cast<std::uint8_t>(code);
        EXPECT_EQ((Frame{Kind::signal, {byte}}.signal()),
                  known ? std::optional(code) : std::nullopt);
        EXPECT_FALSE((Frame{Kind::data, {byte}}.signal()));
        EXPECT_EQ(kindOf(byte).has_value(), code >= 1 && code <= 5) << code;
    }
    EXPECT_FALSE((Frame{Kind::signal, {}}.signal()));
}

TEST(PtyFrameDecoder, FindsEachFaultAsSoonAsItCan) {
    const auto expect = [](DecodeError error, const std::vector<Bytes>& streams) {
        expectFaults<Decoder>(error, PtyFrame::exit(7), streams);
        expectFaults<ByViews<Decoder>>(error, PtyFrame::exit(7), streams);
    };
    // The type comes first, then the size, then the length that the type must have.
    expect(DecodeError::unknownType,
           {{0, 255, 255, 255, 255}, {6, 0, 0, 0, 0}, {255, 0, 0, 0, 0}, {6, 255, 255, 255, 255}});
    expect(DecodeError::tooLarge, {{4, 0, 1, 0, 1}, {1, 0, 1, 0, 1}, {1, 1, 0, 0, 0}});
    expect(DecodeError::badLength,
           {{4, 0, 0, 0, 0}, {4, 0, 0, 0, 2}, {2, 0, 0, 0, 3}, {3, 0, 0, 0, 5}, {5, 0, 1, 0, 0}});
    expect(DecodeError::badValue, {{4, 0, 0, 0, 1, 9}, {2, 0, 0, 0, 4, 3, 0xE9, 0, 24}});
    expect(DecodeError::badValue, {{2, 0, 0, 0, 4, 0, 80, 0, 0}, {2, 0, 0, 0, 4, 0, 80, 1, 0xF5}});
}

TEST(PtyFrameDecoder, GivesTheSameFramesHoweverTheStreamIsCut) {
    const Bytes stream =
        joined({PtyFrame::data(bytesOf("ls\r")), *resize(1, 500), ready(7),
                *encode(Kind::signal, Bytes{15}), PtyFrame::exit(-1), PtyFrame::data({})});
    const auto frames = Decoder().feed(stream).value();
    EXPECT_EQ(frames.size(), 6U);
    for (std::size_t first = 0; first <= stream.size(); ++first) {
        for (std::size_t second = first; second <= stream.size(); ++second)
            for (const auto& got :
                 {decodeInSlices<Decoder>(stream, {first, second}).frames,
                  decodeInSlices<ByViews<Decoder>>(stream, {first, second}).frames})
                EXPECT_EQ(got, frames) << first << ", " << second;
    }
    Decoder decoder;
    for (std::size_t had = 0; had < 9; ++had) // the first frame comes with its last byte
        EXPECT_EQ(decoder.feed(ByteView(stream).subspan(had, 1)).value().size(),
                  had == 7 ? 1U : 0U);
    EXPECT_EQ(decoder.buffered(), 1U);
}

TEST(PtyFrameDecoder, ReadsAWholePayloadWithoutACopy) {
    const Bytes stream = joined({PtyFrame::data(bytesOf("ls\r")), *resize(80, 24)});
    std::vector<const std::uint8_t*> payloads;
    Decoder decoder;
    for (const auto& slice :
         {ByteView(stream).first(2), ByteView(stream).subspan(2), ByteView(stream)})
        ASSERT_TRUE(decoder.feed(slice, [&](const FrameView& frame) {
            EXPECT_EQ(frame.size().has_value(), frame.kind == Kind::resize);
            payloads.push_back(frame.payload.data());
        }));
    const auto* const at = stream.data();
    EXPECT_THAT(payloads, ElementsAre(testing::Ne(at + 5), at + 13, at + 5, at + 13));
}

} // namespace
} // namespace velmo
