#include "core/input/MouseClickRequest.h"

#include "tests/Texts.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using Button = MouseClickRequest::Button;
using Step = MouseClickRequest::Step;

TEST(MouseClickRequest, ReadsAButtonAndACount) {
    const std::string padded = R"({"button":"left"#})";
    const std::pair<std::string, MouseClickRequest> accepted[] = {
        {R"({"button":"left"})", {Button::left, 1}},
        {R"({"button":"right","count":1})", {Button::right, 1}},
        {R"({"count":2,"butto\u006e":"middle"})", {Button::middle, 2}},
        {changed(padded, "#", times(239, " ")), {Button::left, 1}}, // 256 bytes
    };
    for (const auto& [json, request] : accepted)
        EXPECT_EQ(MouseClickRequest::parse(json), request) << json;

    const auto parse = MouseClickRequest::parse;
    expectRefused(parse, {"", "{}", "[]", "\"left\"", R"({"count":1})", R"({"button":"left"} {})",
                          changed(padded, "#", times(240, " ")), "{\"button\":\"left\xFF\"}"});
    expectRefused(parse, R"({"button":#})",
                  {R"("Left")", R"("left ")", R"("left\u0000")", "null", "0"});
    expectRefused(parse, R"({"button":"left","count":#})",
                  words(R"(0 3 -1 2.0 2e0 true "2" null 18446744073709551617 1,"x":1
                                1,"count":2)"));
}

TEST(MouseClickRequest, PlansDownAndUpForEachClick) {
    const auto stepsOf = [](std::int64_t count) {
        return MouseClickRequest{Button::left, count}.steps();
    };
    EXPECT_THAT(stepsOf(2),
                testing::ElementsAre(Step{true, 1}, Step{false, 1}, Step{true, 2}, Step{false, 2}));
    EXPECT_EQ(stepsOf(3).back(), (Step{false, 3}));
    EXPECT_THAT(stepsOf(0), testing::IsEmpty());
    EXPECT_THAT(stepsOf(INT64_MIN), testing::IsEmpty());
}

} // namespace
} // namespace velmo
