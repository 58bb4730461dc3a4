#include "core/output/Output.h"
#include "core/windows/AppTarget.h"
#include "core/windows/ArrangePolicy.h"
#include "core/windows/DisplayRecord.h"
#include "core/windows/FrameArgs.h"
#include "core/windows/FramePlan.h"
#include "core/windows/FrameRecord.h"
#include "core/windows/FrameRequest.h"
#include "core/windows/ScreenGeometry.h"

#include <gmock/gmock.h>

#include <cmath>

namespace velmo {
namespace {

using testing::ElementsAre;

std::optional<FrameRequest> withArgument(std::size_t index, const std::string& text) {
    std::vector<std::string> arguments = {"501", "a.b", "123", "7", "-10", "20", "800", "600"};
    arguments.resize(std::max(arguments.size(), index + 1));
    arguments[index] = text;
    return FrameRequest::parse(arguments);
}

TEST(FrameRequest, ReadsEightArgumentsAndPerhapsAuto) {
    const WindowBounds frame{-10, 20, 800, 600};
    EXPECT_EQ(withArgument(3, "07"), (FrameRequest{501, "a.b", "123", 7, frame}));
    EXPECT_EQ(withArgument(2, "-"), (FrameRequest{501, "a.b", {}, 7, frame}));
    EXPECT_EQ(withArgument(8, "auto"), (FrameRequest{501, "a.b", "123", 7, frame, true}));
    const std::pair<std::size_t, std::string> refused[] = {
        {0, "0"}, {1, " "},    {1, "a\tb"}, {1, "a\x7F"}, {2, ""},   {2, "--"},
        {3, "0"}, {4, "+1"},   {5, "-"},    {6, "0"},     {6, "-1"}, {7, "1.5"},
        {7, "0"}, {8, "Auto"}, {8, ""},     {9, "auto"}};
    for (const auto& [index, text] : refused)
        EXPECT_FALSE(withArgument(index, text)) << index << ' ' << text;
    const std::vector<std::string> words(8, "1");
    EXPECT_TRUE(FrameRequest::parse(words));
    EXPECT_FALSE(FrameRequest::parse(std::span(words).first(7)));
    EXPECT_FALSE(AppTarget::parse(std::span(words).first(2)));
    EXPECT_FALSE(AppTarget::parse(std::span(words).first(4)));
}

TEST(FrameArgs, CoordinatesAreSmallWholeNumbers) {
    const std::pair<std::string, int> accepted[] = {
        {"-0", 0}, {"100000", 100000}, {"-100000", -100000}, {"0000007", 7}, {"-000007", -7}};
    for (const auto& [text, value] : accepted)
        EXPECT_EQ(FrameArgs::coordinate(text), value) << text;
    for (const char* text : {"", "-", "--1", "+5", "1.0", " 1", "100001", "-100001", "00000007",
                             "12345678", "-0000007", "1e3", "\u0661"})
        EXPECT_FALSE(FrameArgs::coordinate(text)) << text;
}

TEST(ArrangePolicy, LeavesPromptsAndTheProductAloneAndWantsTheSameProcess) {
    EXPECT_TRUE(ArrangePolicy::mayArrange(std::nullopt));
    for (const char* id : {"", "com.apple.Safari", "io.velmo", "com.apple.passwords"})
        EXPECT_TRUE(ArrangePolicy::mayArrange(id)) << id;
    for (const char* id : {"COM.APPLE.SECURITYAGENT", "com.apple.LocalAuthentication.UIAgent",
                           "com.apple.coreservices.uiagent", "Io.Velmo.Host"})
        EXPECT_FALSE(ArrangePolicy::mayArrange(id)) << id;
    const AppTarget target{501, "a.B", "123"};
    EXPECT_TRUE(ArrangePolicy::identityMatches(target, "A.b", "/A.app", 123));
    EXPECT_FALSE(ArrangePolicy::identityMatches(target, "A.b", "/A.app", 124));
    EXPECT_FALSE(ArrangePolicy::identityMatches(target, "a.c", "/A.app", 123));
}

TEST(FramePlan, ShrinksFirstAndMovesTwice) {
    const WindowBounds target{10, 20, 400, 700};
    const FramePlan::Position move{10, 20};
    const FramePlan::Size size{400, 700};
    const auto from = [&](double width, double height, bool resizable = true) {
        return FramePlan::steps(WindowBounds{0, 0, width, height}, target, resizable);
    };
    EXPECT_THAT(from(800, 600), ElementsAre(FramePlan::Size{400, 600}, move, size, move));
    EXPECT_THAT(from(300, 701), ElementsAre(FramePlan::Size{300, 700}, move, size, move));
    EXPECT_THAT(from(400, 700), ElementsAre(move, size, move));
    EXPECT_THAT(FramePlan::steps({}, target, true), ElementsAre(move, size, move));
    EXPECT_THAT(from(800, 600, false), ElementsAre(move));
}

TEST(FramePlan, LandsWithinFortyPoints) {
    const auto landed = [](std::optional<WindowBounds> bounds, bool resizable) {
        return FramePlan::landed(bounds, {0, 0, 400, 300}, resizable);
    };
    EXPECT_TRUE(landed({{40, -40, 440, 260}}, true));
    for (const WindowBounds& resized : {WindowBounds{0, 0, 441, 300}, {0, 0, 400, 259.5}})
        EXPECT_TRUE(landed(resized, false) && !landed(resized, true)) << resized.width;
    for (const WindowBounds& moved : {WindowBounds{41, 0, 400, 300}, {0, -40.5, 400, 300}})
        EXPECT_FALSE(landed(moved, false) || landed(moved, true)) << moved.x;
    EXPECT_FALSE(landed({}, false) || landed({{std::nan(""), 0, 400, 300}}, false));
}

TEST(ScreenGeometry, TurnsTheVerticalAxisOver) {
    EXPECT_EQ(ScreenGeometry::topLeft({1, 1000, 5, 900}, 990), (WindowBounds{1, -910, 5, 900}));
}

TEST(DisplayRecord, IsWrittenForThePhone) {
    const WindowBounds frame{0, 1, 2, 3};
    EXPECT_EQ(Output::jsonLine(DisplayRecord{"1", "A", frame, frame, 2, true, {32, 0, 0, 1}, true}),
              R"({"builtin":true,"frame":{"height":3,"width":2,"x":0,"y":1},"id":"1","name":"A",)"
              R"("primary":true,"safe":{"bottom":0,"left":0,"right":1,"top":32},"scale":2,)"
              R"("work":{"height":3,"width":2,"x":0,"y":1}})");
    EXPECT_EQ(Output::jsonLine(FrameRecord{1, 2, 3, 4, true}),
              R"({"height":4,"resized":true,"width":3,"x":1,"y":2})");
}

} // namespace
} // namespace velmo
