#include "core/terminal/PtyFrame.h"

#include "tests/core/terminal/Slices.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <numeric>

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

TEST(PtyFrame, AResizeIsBounded) {
    EXPECT_TRUE(resize(1, 1));
    for (const auto& [cols, rows] :
         std::vector<std::pair<int, int>>{{0, 10}, {10, 0}, {1001, 1}, {1, 501}, {65535, 65535}})
        EXPECT_FALSE(resize(static_cast<std::uint16_t>(cols), static_cast<std::uint16_t>(rows)))
            << cols << " x " << rows;
    EXPECT_FALSE(validSize(-1, 10));
    EXPECT_FALSE(validSize(10, -500));
}

TEST(PtyFrame, EncodesAPayloadOfTheRightLengthOnly) {
    for (const Kind kind : {Kind::resize, Kind::exit, Kind::signal, Kind::ready}) {
        for (std::size_t tried = 0; tried < 6; ++tried)
            EXPECT_EQ(encode(kind, Bytes(tried)).has_value(),
                      tried == (kind == Kind::signal ? 1 : 4))
                << std::to_underlying(kind) << ", " << tried << " bytes";
    }
    EXPECT_TRUE(encode(Kind::data, Bytes(maxPayload)));
    EXPECT_FALSE(encode(Kind::data, Bytes(maxPayload + 1)));
}

TEST(PtyFrame, CutsDataIntoTheLongestFrames) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, maxPayload - 1, maxPayload,
                                   maxPayload + 1, 3 * maxPayload}) {
        Bytes bytes(size);
        std::iota(bytes.begin(), bytes.end(), std::uint8_t{7});
        const Bytes stream = PtyFrame::data(bytes);
        EXPECT_LE(stream.capacity(), size + headerBytes * (size / maxPayload + 1)) << size;
        ByteView rest = bytes;
        const auto frames = Decoder().feed(stream);
        ASSERT_TRUE(frames) << size;
        for (const Frame& frame : *frames) {
            const ByteView piece = rest.first(std::min(rest.size(), maxPayload));
            EXPECT_EQ(frame, (Frame{Kind::data, {piece.begin(), piece.end()}})) << size;
            rest = rest.subspan(piece.size());
        }
        EXPECT_TRUE(rest.empty()) << size;
    }
    EXPECT_THAT(PtyFrame::data({}), ElementsAre(1, 0, 0, 0, 0));
}

TEST(PtyFrame, ReadsValuesOfTheirOwnKindAndLengthOnly) {
    EXPECT_EQ((Frame{Kind::resize, {0, 80, 1, 24}}.size()), (Size{80, 280}));
    EXPECT_FALSE((Frame{Kind::resize, {0, 80, 1}}.size()));
    EXPECT_FALSE((Frame{Kind::exit, {0, 80, 0, 24}}.size()));
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
    };
    // The type comes first, then the size, then the length that the type must have.
    expect(DecodeError::unknownType,
           {{0, 255, 255, 255, 255}, {6, 0, 0, 0, 0}, {255, 0, 0, 0, 0}, {6, 255, 255, 255, 255}});
    expect(DecodeError::tooLarge, {{4, 0, 1, 0, 1}, {1, 0, 1, 0, 1}, {1, 255, 255, 255, 255}});
    expect(DecodeError::badLength,
           {{4, 0, 0, 0, 0}, {4, 0, 0, 0, 2}, {2, 0, 0, 0, 3}, {3, 0, 0, 0, 5}, {5, 0, 1, 0, 0}});
    expect(DecodeError::badValue, {{4, 0, 0, 0, 1, 9},
                                   {2, 0, 0, 0, 4, 0, 0, 0, 24},
                                   {2, 0, 0, 0, 4, 3, 0xE9, 0, 24},
                                   {2, 0, 0, 0, 4, 0, 80, 0, 0},
                                   {2, 0, 0, 0, 4, 0, 80, 1, 0xF5}});
}

TEST(PtyFrameDecoder, GivesAFrameWithItsLastByteAndACopyDecodesOnItsOwn) {
    const Frame whole{Kind::data, Bytes(300, 'x')};
    const Bytes stream = PtyFrame::data(whole.payload);
    for (std::size_t had = 0; had < stream.size(); ++had) {
        Decoder decoder;
        EXPECT_THAT(decoder.feed(joined({*resize(80, 24), ByteView(stream).first(had)})).value(),
                    ElementsAre(Frame{Kind::resize, {0, 80, 0, 24}}));
        EXPECT_EQ(decoder.buffered(), had);
        Decoder copy = decoder;
        EXPECT_THAT(decoder.feed(ByteView(stream).subspan(had)).value(), ElementsAre(whole));
        EXPECT_EQ(decoder.buffered(), 0U);
        EXPECT_THAT(copy.feed(ByteView(stream).subspan(had)).value(), ElementsAre(whole));
    }
}

Bytes someStream() {
    Bytes stream;
    const auto count = *rc::gen::inRange(0, 12);
    for (int i = 0; i < count; ++i) {
        const auto bytes = *rc::gen::arbitrary<Bytes>();
        const auto number = *rc::gen::arbitrary<std::uint32_t>();
        const Bytes parts[] = {
            PtyFrame::data(bytes),
            PtyFrame::data(Bytes(number % 600, 1)),
            *resize(static_cast<std::uint16_t>(1 + number % 1000), 500),
            PtyFrame::exit(static_cast<std::int32_t>(number)),
            *encode(Kind::signal, Bytes{signals[number % signals.size()].code}),
            ready(number),
        };
        // Now and then something that is no frame, or cut short.
        stream = joined({stream, number % 16 == 0 ? bytes : parts[number % std::size(parts)]});
    }
    return stream;
}

RC_GTEST_PROP(PtyFrameDecoder, SlicingChangesNothing, ()) {
    assertSlicingChangesNothing<Decoder>(someStream(), std::identity());
}

} // namespace
} // namespace velmo
