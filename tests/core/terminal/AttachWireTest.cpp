#include "core/terminal/AttachWire.h"

#include "tests/Texts.h"
#include "tests/core/terminal/Slices.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using namespace std::string_literals;
using namespace PtyAttach;

Bytes controlBytes(std::string_view json) {
    return frame(FrameType::control, bytesOf(json)).value();
}

/// Returns the JSON of a control frame and checks the frame's header.
std::string jsonOf(const Bytes& frame) {
    EXPECT_EQ(Decoder().feed(frame).value().size(), 1U);
    return std::string(textOf(ByteView(frame).subspan(headerBytes)));
}

/// Returns the content of a frame; of a control frame, its member "a".
std::string told(const Frame& frame) {
    if (const auto* const raw = std::get_if<Bytes>(&frame))
        return "data " + std::string(textOf(*raw));
    const auto member = std::get<ControlObject>(frame).object().member("a");
    return "control " + std::string(member->text().value());
}

TEST(AttachWire, BuildsTheClientsMessages) {
    EXPECT_EQ(jsonOf(*hello("tok-en_1", 80, 24)),
              R"({"cols":80,"rows":24,"t":"hello","token":"tok-en_1","v":1})");
    EXPECT_EQ(jsonOf(resize(1000, 500)), R"({"cols":1000,"rows":500,"t":"resize"})");
    EXPECT_EQ(joined({detachFrame}), controlBytes(R"({"t":"detach"})"));
    EXPECT_EQ(joined({hangupFrame}), controlBytes(R"({"t":"hangup"})"));
    EXPECT_THAT(PtyAttach::data({}), testing::ElementsAre(1, 0, 0, 0, 0));
}

TEST(AttachWire, BuildsAndReadsFramesUpToTheirLimits) {
    const std::size_t rest = jsonOf(*hello("", 80, 24)).size();
    EXPECT_TRUE(hello(std::string(maxControl - rest, 't'), 80, 24));
    EXPECT_FALSE(hello(std::string(maxControl - rest + 1, 't'), 80, 24));
    EXPECT_FALSE(frame(FrameType::data, Bytes(maxData + 1)));

    const Bytes stream =
        joined({controlBytes(R"({"a":")" + std::string(maxControl - 8, 'x') + "\"}"),
                PtyAttach::data(Bytes(maxData + 1, 5))});
    const auto frames = Decoder().feed(stream).value();
    EXPECT_EQ(frames.size(), 3U);
    EXPECT_EQ(told(frames.at(0)), "control " + std::string(maxControl - 8, 'x'));
    EXPECT_TRUE(std::get<Bytes>(frames.at(1)) == Bytes(maxData, 5));
}

TEST(AttachWire, ClampsSizes) {
    for (const int low : {0, -1, -INT32_MAX}) {
        EXPECT_EQ(clampSize(low, 5000), (PtyFrame::Size{80, 24})) << low;
        EXPECT_EQ(clampSize(5000, low), (PtyFrame::Size{80, 24})) << low;
    }
    EXPECT_EQ(clampSize(1, 501), (PtyFrame::Size{1, 500}));
    EXPECT_EQ(clampSize(1001, 1), (PtyFrame::Size{1000, 1}));
}

void expectRead(const HostMessage& expected, const Strings& lines) {
    for (const std::string& json : lines)
        EXPECT_EQ(message(ControlObject::parse(json).value().object()), expected) << json;
}

TEST(AttachWire, ReadsWhatTheHostSays) {
    expectRead(host::Size{}, {R"({"t":"size"})"});
    expectRead(host::Other{}, {R"({"t":"Size"})", R"({"t":1})", "{}"});
    const std::string exit = R"({"t":"exit","code":#})";
    const std::string error = R"({"t":"error","code":#})";
    expectRead(host::Exit{0}, each(exit, {"0", "-9223372036854775808"}));
    expectRead(host::Exit{254}, each(exit, {"254"}));
    expectRead(host::Exit{255}, each(exit, {"255", "256", "9223372036854775807"}));
    for (const std::string& code : {"no-such_session.2"s, std::string(32, 'a')})
        expectRead(host::Error{code}, each(error, {'"' + code + '"'}));
    const host::Error bad{"bad-message"};
    expectRead(bad, each(exit, {"1.0", "\"1\"", "true"}));
    expectRead(bad, each(error, {'"' + std::string(33, 'a') + '"', "\"\"", "\"a b\"",
                                 R"("\u001b[31m")", "\"é\"", "7"}));
    expectRead(bad, {R"({"t":"exit"})", R"({"t":"error"})"});
}

TEST(AttachWire, LabelsReplaceTheEnglishOnesOneByOne) {
    expectRead(host::Ready{}, {R"({"t":"ready"})", R"({"t":"ready","name":7,"labels":[]})"});
    const Labels some{.exit = "Ende ({code})", .hostGone = ""};
    expectRead(
        host::Ready{"zsh\n", some},
        {R"json({"t":"ready","name":"zsh\n","labels":{"exit":"Ende\u001b ({code})","ended":null,)json"
         R"("hostGone":"","error":1,"more":"x"}})"});
}

TEST(AttachDecoder, FindsEachFaultAsSoonAsItCan) {
    const auto expect = [](DecodeError error, const std::vector<Bytes>& streams) {
        expectFaults<Decoder>(error, controlBytes("{}"), streams);
    };
    expect(DecodeError::unknownType,
           {{0, 0, 0, 0, 0}, {2, 0, 0, 0, 4}, {5, 255, 255, 255, 255}, {7, 0, 0, 0, 0}});
    expect(DecodeError::tooLarge, {{6, 0, 0, 0x10, 1}, {1, 0, 1, 0, 1}, {6, 255, 255, 255, 255}});
    expect(DecodeError::badJSON,
           {controlBytes(""), controlBytes("[1]"), controlBytes("{\"t\""), controlBytes("{}{}"),
            controlBytes("{\"t\":1,\"t\":2}"), controlBytes("{\"\xFF\":1}")});
}

} // namespace
} // namespace velmo
