#include "core/input/MouseClickRequest.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using Button = MouseClickRequest::Button;
using Step = MouseClickRequest::Step;

TEST(MouseClickRequest, ReadsAButtonAndACount) {
    const std::pair<std::string, MouseClickRequest> accepted[] = {
        {R"({"button":"left"})", {Button::left, 1}},
        {R"({"button":"right","count":1})", {Button::right, 1}},
        {R"({"count":2,"butto\u006e":"middle"})", {Button::middle, 2}},
        {"{\"button\":\"left\"" + std::string(239, ' ') + "}", {Button::left, 1}}, // 256 bytes
    };
    for (const auto& [json, request] : accepted)
        EXPECT_EQ(MouseClickRequest::parse(json), request) << json;

    const std::string refused[] = {
        "",
        "{}",
        "[]",
        "\"left\"",
        R"({"count":1})",
        R"({"button":"Left"})",
        R"({"button":"left "})",
        R"({"button":"left\u0000"})",
        R"({"button":null})",
        R"({"button":0})",
        R"({"button":"left","count":0})",
        R"({"button":"left","count":3})",
        R"({"button":"left","count":-1})",
        R"({"button":"left","count":2.0})",
        R"({"button":"left","count":2e0})",
        R"({"button":"left","count":true})",
        R"({"button":"left","count":"2"})",
        R"({"button":"left","count":null})",
        R"({"button":"left","count":18446744073709551617})",
        R"({"button":"left","count":1,"x":1})",
        R"({"button":"left","count":1,"count":2})",
        R"({"button":"left"} {})",
        "{\"button\":\"left\xFF\"}",
        "{\"button\":\"left\"" + std::string(240, ' ') + "}", // 257 bytes
    };
    for (const std::string& json : refused)
        EXPECT_FALSE(MouseClickRequest::parse(json)) << json;
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
