#include "core/terminal/AttachWire.h"

#include "tests/core/terminal/Slices.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <string>

namespace velmo {
namespace {

using namespace PtyAttach;
using testing::ElementsAre;

Bytes bytes(std::string_view text) {
    const ByteView view = bytesOf(text);
    return {view.begin(), view.end()};
}

Bytes controlBytes(std::string_view json) {
    return frame(FrameType::control, bytesOf(json)).value();
}

/// The JSON of a control frame; its header must be right.
std::string jsonOf(const Bytes& frame) {
    EXPECT_EQ(Decoder().feed(frame).value().size(), 1U);
    return std::string(textOf(ByteView(frame).subspan(headerBytes)));
}

TEST(AttachWire, BuildsTheClientsMessages) {
    EXPECT_EQ(jsonOf(*hello("tok-en_1", 80, 24)),
              R"({"cols":80,"rows":24,"t":"hello","token":"tok-en_1","v":1})");
    EXPECT_EQ(jsonOf(resize(1000, 500)), R"({"cols":1000,"rows":500,"t":"resize"})");
    EXPECT_EQ(Bytes(detachFrame.begin(), detachFrame.end()), controlBytes(R"({"t":"detach"})"));
    EXPECT_EQ(Bytes(hangupFrame.begin(), hangupFrame.end()), controlBytes(R"({"t":"hangup"})"));
    EXPECT_EQ(PtyAttach::data(Bytes(maxData + 1)).size(), maxData + 1 + 2 * headerBytes);
    EXPECT_THAT(PtyAttach::data({}), ElementsAre(1, 0, 0, 0, 0));
}

TEST(AttachWire, BuildsNoFrameBeyondItsLimit) {
    const std::size_t rest = jsonOf(*hello("", 80, 24)).size();
    EXPECT_TRUE(hello(std::string(maxControl - rest, 't'), 80, 24));
    EXPECT_FALSE(hello(std::string(maxControl - rest + 1, 't'), 80, 24));
    EXPECT_TRUE(frame(FrameType::data, Bytes(maxData)));
    EXPECT_FALSE(frame(FrameType::data, Bytes(maxData + 1)));
    EXPECT_TRUE(frame(FrameType::control, Bytes(maxControl)));
    EXPECT_FALSE(frame(FrameType::control, Bytes(maxControl + 1)));
}

TEST(AttachWire, ClampsSizes) {
    constexpr int most = std::numeric_limits<int>::max();
    const std::pair<PtyFrame::Size, PtyFrame::Size> cases[] = {
        {{0, 50}, {80, 24}},   {{5000, 0}, {80, 24}},       {{-most, most}, {80, 24}},
        {{1, 1}, {1, 1}},      {{5000, 5000}, {1000, 500}}, {{1000, 501}, {1000, 500}},
        {{120, 40}, {120, 40}}};
    for (const auto& [given, clamped] : cases)
        EXPECT_EQ(clampSize(given.cols, given.rows), clamped) << given.cols << "x" << given.rows;
}

HostMessage read(std::string_view json) {
    const auto parsed = ControlObject::parse(json);
    EXPECT_TRUE(parsed) << json;
    return parsed ? message(parsed->object()) : HostMessage(host::Other{});
}

TEST(AttachWire, ReadsWhatTheHostSays) {
    const host::Error bad{"bad-message"};
    const std::pair<std::string, HostMessage> cases[] = {
        {R"({"t":"size"})", host::Size{}},
        {R"({"t":"Size"})", host::Other{}},
        {R"({"t":1})", host::Other{}},
        {R"({})", host::Other{}},
        {R"({"t":"exit","code":0})", host::Exit{0}},
        {R"({"t":"exit","code":254})", host::Exit{254}},
        {R"({"t":"exit","code":255})", host::Exit{255}},
        {R"({"t":"exit","code":256})", host::Exit{255}},
        {R"({"t":"exit","code":-9223372036854775808})", host::Exit{0}},
        {R"({"t":"exit","code":9223372036854775807})", host::Exit{255}},
        {R"({"t":"exit","code":1.0})", bad},
        {R"({"t":"exit","code":"1"})", bad},
        {R"({"t":"exit","code":true})", bad},
        {R"({"t":"exit"})", bad},
        {R"({"t":"error","code":"no-such_session.2"})", host::Error{"no-such_session.2"}},
        {R"({"t":"error","code":")" + std::string(32, 'a') + "\"}",
         host::Error{std::string(32, 'a')}},
        {R"({"t":"error","code":")" + std::string(33, 'a') + "\"}", bad},
        {R"({"t":"error","code":""})", bad},
        {R"({"t":"error","code":"a b"})", bad},
        {R"({"t":"error","code":"\u001b[31m"})", bad},
        {R"({"t":"error","code":"é"})", bad},
        {R"({"t":"error","code":7})", bad},
        {R"({"t":"error"})", bad},
    };
    for (const auto& [json, expected] : cases)
        EXPECT_EQ(read(json), expected) << json;
}

TEST(AttachWire, LabelsReplaceTheEnglishOnesOneByOne) {
    const Labels some{.exit = "Ende ({code})", .hostGone = ""};
    const std::pair<std::string, HostMessage> cases[] = {
        {R"({"t":"ready"})", host::Ready{}},
        {R"({"t":"ready","name":7,"labels":[]})", host::Ready{}},
        {R"json({"t":"ready","name":"zsh\n","labels":{"exit":"Ende\u001b ({code})","ended":null,)json"
         R"("hostGone":"","error":1,"more":"x"}})",
         host::Ready{"zsh\n", some}},
    };
    for (const auto& [json, expected] : cases)
        EXPECT_EQ(read(json), expected) << json;
}

TEST(AttachDecoder, FindsEachFaultAsSoonAsItCan) {
    const Fault<Decoder> faults[] = {
        {{0, 0, 0, 0, 0}, DecodeError::unknownType, 5},
        {{2, 0, 0, 0, 4}, DecodeError::unknownType, 5},
        {{5, 255, 255, 255, 255}, DecodeError::unknownType, 5},
        {{7, 0, 0, 0, 0}, DecodeError::unknownType, 5},
        {{6, 0, 0, 0x10, 1}, DecodeError::tooLarge, 5},
        {{1, 0, 1, 0, 1}, DecodeError::tooLarge, 5},
        {{6, 255, 255, 255, 255}, DecodeError::tooLarge, 5},
        {{6, 0, 0, 0, 0}, DecodeError::badJSON, 5},
        {controlBytes("[1]"), DecodeError::badJSON, 8},
        {controlBytes("{\"t\""), DecodeError::badJSON, 9},
        {controlBytes("{}{}"), DecodeError::badJSON, 9},
        {controlBytes("{\"t\":1,\"t\":2}"), DecodeError::badJSON, 18},
        {controlBytes("{\"\xFF\":1}"), DecodeError::badJSON, 12},
    };
    for (const auto& fault : faults)
        expectFault(fault, controlBytes("{}"));
}

TEST(AttachDecoder, TakesPayloadsUpToTheirLimits) {
    const std::string longest = "{\"a\":\"" + std::string(maxControl - 8, 'x') + "\"}";
    Bytes stream = controlBytes(longest);
    const Bytes most = PtyAttach::data(Bytes(maxData, 5));
    stream.insert(stream.end(), most.begin(), most.end());
    const auto frames = Decoder().feed(stream).value();
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(std::get<ControlObject>(frames[0]).object().member("a")->text()->size(),
              maxControl - 8);
    EXPECT_EQ(std::get<Bytes>(frames[1]), Bytes(maxData, 5));
}

/// Frames told apart by what they hold.
std::string told(const Frame& frame) {
    if (const auto* const raw = std::get_if<Bytes>(&frame))
        return "data " + std::string(textOf(*raw));
    const auto member = std::get<ControlObject>(frame).object().member("a");
    return "control " + std::string(member->text().value());
}

RC_GTEST_PROP(AttachDecoder, SlicingChangesNothing, ()) {
    Bytes stream;
    for (const int kind : *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 9))) {
        const auto text = *rc::gen::string<std::string>();
        std::string json = "{\"a\":";
        JsonWriter(json).text(text);
        json += '}';
        Bytes part = bytes(text);
        if (kind > 0)
            part = kind < 5 ? PtyAttach::data(bytesOf(text)) : controlBytes(json);
        stream.insert(stream.end(), part.begin(), part.end());
    }
    assertSlicingChangesNothing<Decoder>(stream, told);
}

} // namespace
} // namespace velmo
