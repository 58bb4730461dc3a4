#include "core/terminal/PtyFrame.h"

#include "tests/core/terminal/Slices.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <numeric>
#include <string>

namespace velmo {
namespace {

using namespace PtyFrame;
using testing::ElementsAre;
using testing::IsEmpty;

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

TEST(PtyFrame, EncodesNetworkOrder) {
    EXPECT_THAT(PtyFrame::exit(-1), ElementsAre(3, 0, 0, 0, 4, 255, 255, 255, 255));
    EXPECT_THAT(PtyFrame::exit(std::numeric_limits<std::int32_t>::min()),
                ElementsAre(3, 0, 0, 0, 4, 0x80, 0, 0, 0));
    EXPECT_THAT(ready(0x89ABCDEF), ElementsAre(5, 0, 0, 0, 4, 0x89, 0xAB, 0xCD, 0xEF));
    EXPECT_THAT(*resize(1000, 500), ElementsAre(2, 0, 0, 0, 4, 3, 0xE8, 1, 0xF4));
    EXPECT_THAT(*encode(Kind::signal, Bytes{15}), ElementsAre(4, 0, 0, 0, 1, 15));
    EXPECT_THAT(PtyFrame::data({}), ElementsAre(1, 0, 0, 0, 0));
}

TEST(PtyFrame, AResizeIsBounded) {
    const std::pair<int, int> refused[] = {{0, 10},  {10, 0},    {1001, 1},     {1, 501},
                                           {-1, 10}, {10, -500}, {65535, 65535}};
    for (const auto& [cols, rows] : refused) {
        EXPECT_FALSE(validSize(cols, rows)) << cols << " x " << rows;
        if (cols >= 0 && rows >= 0) {
            EXPECT_FALSE(resize(static_cast<std::uint16_t>(cols), static_cast<std::uint16_t>(rows)))
                << cols << " x " << rows;
        }
    }
    EXPECT_TRUE(resize(1, 1));
}

TEST(PtyFrame, EncodeJudgesLengthsOnly) {
    const std::pair<Kind, std::size_t> fixed[] = {
        {Kind::resize, 4}, {Kind::exit, 4}, {Kind::signal, 1}, {Kind::ready, 4}};
    for (const auto& [kind, length] : fixed) {
        for (std::size_t tried = 0; tried < 6; ++tried) {
            EXPECT_EQ(encode(kind, Bytes(tried)).has_value(), tried == length)
                << std::to_underlying(kind) << ", " << tried << " bytes";
        }
    }
    EXPECT_TRUE(encode(Kind::data, Bytes(maxPayload)));
    EXPECT_FALSE(encode(Kind::data, Bytes(maxPayload + 1)));
    EXPECT_TRUE(encode(Kind::signal, Bytes{9}));
}

TEST(PtyFrame, CutsDataIntoTheLongestFrames) {
    struct Case {
        std::size_t bytes;
        std::vector<std::size_t> payloads;
    };

    const Case cases[] = {
        {0, {0}},
        {1, {1}},
        {maxPayload - 1, {maxPayload - 1}},
        {maxPayload, {maxPayload}},
        {maxPayload + 1, {maxPayload, 1}},
        {3 * maxPayload, {maxPayload, maxPayload, maxPayload}},
    };
    for (const auto& [size, payloads] : cases) {
        Bytes bytes(size);
        std::iota(bytes.begin(), bytes.end(), std::uint8_t{7});
        const Bytes stream = PtyFrame::data(bytes);
        EXPECT_LE(stream.capacity(), size + headerBytes * (size / maxPayload + 1)) << size;
        Bytes received;
        std::vector<std::size_t> sizes;
        const auto frames = Decoder().feed(stream).value();
        for (const Frame& frame : frames) {
            EXPECT_EQ(frame.kind, Kind::data);
            sizes.push_back(frame.payload.size());
            received.insert(received.end(), frame.payload.begin(), frame.payload.end());
        }
        EXPECT_EQ(sizes, payloads) << size;
        EXPECT_EQ(received, bytes) << size;
    }
}

TEST(PtyFrame, ReadsValuesOfTheirOwnKindAndLengthOnly) {
    EXPECT_EQ((Frame{Kind::resize, {0, 80, 1, 24}}.size()), (Size{80, 280}));
    EXPECT_FALSE((Frame{Kind::resize, {0, 80, 1}}.size()));
    EXPECT_FALSE((Frame{Kind::exit, {0, 80, 0, 24}}.size()));
    for (int code = 0; code < 256; ++code) {
        const bool known = code == 1 || code == 2 || code == 15;
        const Bytes payload{static_cast<std::uint8_t>(code)};
        EXPECT_EQ((Frame{Kind::signal, payload}.signal()),
                  known ? std::optional(code) : std::nullopt);
        EXPECT_FALSE((Frame{Kind::data, payload}.signal()));
        EXPECT_EQ(kindOf(static_cast<std::uint8_t>(code)).has_value(), code >= 1 && code <= 5);
    }
    EXPECT_FALSE((Frame{Kind::signal, {}}.signal()));
}

TEST(PtyFrameDecoder, FindsEachFaultAsSoonAsItCan) {
    const Fault<Decoder> faults[] = {
        {{0, 255, 255, 255, 255}, DecodeError::unknownType, 5},
        {{6, 0, 0, 0, 0}, DecodeError::unknownType, 5},
        {{255, 0, 0, 0, 0}, DecodeError::unknownType, 5},
        {{6, 255, 255, 255, 255}, DecodeError::unknownType, 5}, // the type comes first,
        {{4, 0, 1, 0, 1}, DecodeError::tooLarge, 5},            // then the size
        {{1, 0, 1, 0, 1}, DecodeError::tooLarge, 5},
        {{1, 255, 255, 255, 255}, DecodeError::tooLarge, 5},
        {{4, 0, 0, 0, 0}, DecodeError::badLength, 5},
        {{4, 0, 0, 0, 2}, DecodeError::badLength, 5},
        {{2, 0, 0, 0, 3}, DecodeError::badLength, 5},
        {{3, 0, 0, 0, 5}, DecodeError::badLength, 5},
        {{5, 0, 1, 0, 0}, DecodeError::badLength, 5},
        {{4, 0, 0, 0, 1, 9}, DecodeError::badValue, 6},
        {{2, 0, 0, 0, 4, 0, 0, 0, 24}, DecodeError::badValue, 9},
        {{2, 0, 0, 0, 4, 3, 0xE9, 0, 24}, DecodeError::badValue, 9},
        {{2, 0, 0, 0, 4, 0, 80, 0, 0}, DecodeError::badValue, 9},
        {{2, 0, 0, 0, 4, 0, 80, 1, 0xF5}, DecodeError::badValue, 9},
    };
    for (const auto& fault : faults)
        expectFault(fault, PtyFrame::exit(7));
}

TEST(PtyFrameDecoder, GivesWhatIsWholeBeforeTheFaultIsThere) {
    Decoder decoder;
    EXPECT_THAT(decoder.feed(joined({*resize(80, 24), {6, 0, 0, 0}})).value(),
                ElementsAre(Frame{Kind::resize, {0, 80, 0, 24}}));
    EXPECT_EQ(decoder.buffered(), 4U);
    EXPECT_EQ(decoder.feed(Bytes{0}).error(), DecodeError::unknownType);
}

TEST(PtyFrameDecoder, GivesAFrameWithItsLastByte) {
    const Bytes stream = PtyFrame::data(Bytes(300, 'x'));
    Decoder decoder;
    for (std::size_t i = 0; i + 1 < stream.size(); ++i) {
        EXPECT_THAT(decoder.feed(ByteView(stream).subspan(i, 1)).value(), IsEmpty());
        EXPECT_EQ(decoder.buffered(), i + 1);
    }
    EXPECT_THAT(decoder.feed(ByteView(stream).last(1)).value(),
                ElementsAre(Frame{Kind::data, Bytes(300, 'x')}));
    EXPECT_EQ(decoder.buffered(), 0U);
}

TEST(PtyFrameDecoder, ACopyDecodesOnItsOwn) {
    Decoder decoder;
    ASSERT_TRUE(decoder.feed(Bytes{4, 0, 0}));
    Decoder copy = decoder;
    EXPECT_EQ(copy.feed(Bytes{0, 2}).error(), DecodeError::badLength);
    EXPECT_THAT(decoder.feed(Bytes{0, 1, 2}).value(), ElementsAre(Frame{Kind::signal, {2}}));
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
        const Bytes& part = number % 16 == 0 ? bytes : parts[number % std::size(parts)];
        stream.insert(stream.end(), part.begin(), part.end());
    }
    return stream;
}

RC_GTEST_PROP(PtyFrameDecoder, SlicingChangesNothing, ()) {
    assertSlicingChangesNothing<Decoder>(someStream(), std::identity());
}

} // namespace
} // namespace velmo
