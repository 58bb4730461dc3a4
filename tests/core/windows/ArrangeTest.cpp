#include "core/windows/AppTarget.h"
#include "core/windows/ArrangePolicy.h"
#include "core/windows/DisplayRecord.h"
#include "core/windows/FramePlan.h"
#include "core/windows/FrameRecord.h"
#include "core/windows/FrameRequest.h"
#include "core/windows/ScreenGeometry.h"
#include "tests/Texts.h"

#include <gmock/gmock.h>

#include <cmath>

namespace velmo {
namespace {

using testing::ElementsAre;

std::optional<FrameRequest> withArgument(std::size_t index, const std::string& text) {
    Strings arguments = words("501 a.b 123 7 -10 20 800 600");
    arguments.resize(std::max(arguments.size(), index + 1));
    arguments[index] = text;
    return FrameRequest::parse(arguments);
}

TEST(FrameRequest, ReadsEightArgumentsAndPerhapsAuto) {
    EXPECT_EQ(encodeJson(withArgument(3, "07").value()),
              R"({"appId":"a.b","auto":false,"frame":{"height":600,"width":800,"x":-10,"y":20},)"
              R"("pid":501,"started":"123","windowId":7})");
    EXPECT_TRUE(withArgument(8, "auto")->auto_);
    EXPECT_EQ(withArgument(2, "-")->started, std::nullopt);
    EXPECT_EQ(withArgument(5, "-100000")->frame.y, -100000);

    const struct {
        Strings accepted, refused;
    } arguments[] = {
        {.refused = {"0"}},
        {.accepted = {"a b"}, .refused = {" ", "a\tb", "a\x7F"}},
        {.accepted = {"-", "0"}, .refused = {"", "--"}},
        {.refused = {"0"}},
        {.accepted = {"-0", "100000", "-000007", "0000007"},
         .refused = {"", "-", "--1", "+5", "1.0", " 1", "100001", "00000007", "1e3", "\u0661"}},
        {.refused = {"-100001"}},
        {.accepted = {"1", "100000"}, .refused = {"0", "-1"}},
        {.accepted = {"1"}, .refused = {"1.5", "0"}},
        {.refused = {"Auto", ""}},
        {.refused = {"auto"}}};

    for (std::size_t i = 0; i < std::size(arguments); ++i)
        expectVerdicts([&](const std::string& text) { return withArgument(i, text); },
                       arguments[i].accepted, arguments[i].refused);

    const Strings ones = words(times(8, "1 "));
    for (std::size_t count = 0; count <= ones.size(); ++count) {
        EXPECT_EQ(FrameRequest::parse(std::span(ones).first(count)).has_value(), count == 8);
        EXPECT_EQ(AppTarget::parse(std::span(ones).first(count)).has_value(), count == 3);
    }
}

TEST(FrameRequest, MakesTheWordsThatAskForAFrameInWholePoints) {
    const double none = std::nan("");
    const WindowRecord window{.id = 7, .pid = 501, .appId = "a.b", .started = "123"};
    const auto other = [&](auto WindowRecord::* member, const auto& value) {
        WindowRecord record = window;
        record.*member = value;
        return record;
    };

    const struct {
        WindowRecord window;
        WindowBounds frame;
        std::string expected; ///< empty: no request
    } cases[] = {
        {window, {-10, 20, 800, 600}, "501 a.b 123 7 -10 20 800 600"},
        {window, {-0.4, 1.6, 1.5, 0.5}, "501 a.b 123 7 0 2 2 1"},
        {window, {-100000, 100000, 100000, 1}, "501 a.b 123 7 -100000 100000 100000 1"},
        {other(&WindowRecord::started, "-"), {0, 0, 1, 1}, "501 a.b - 7 0 0 1 1"},
        {other(&WindowRecord::started, ""), {0, 0, 1, 1}, ""},
        {other(&WindowRecord::appId, ""), {0, 0, 1, 1}, ""},
        {other(&WindowRecord::pid, 0), {0, 0, 1, 1}, ""},
        {other(&WindowRecord::id, 0U), {0, 0, 1, 1}, ""},
        {window, {none, 0, 1, 1}, ""},
        {window, {0, -HUGE_VAL, 1, 1}, ""},
        {window, {0, 100001, 1, 1}, ""},
        {window, {0, 0, 0.4, 1}, ""},
        {window, {0, 0, 1, none}, ""},
    };

    for (const auto& [record, frame, expected] : cases) {
        const auto made = FrameRequest::words(record, frame);
        EXPECT_EQ(made.value_or(Strings()), words(expected));
        if (const auto request = made.and_then(FrameRequest::parse)) {
            EXPECT_EQ(request->window(), WindowRequest::parse(*WindowRequest::words(record)));
        }
    }
}

TEST(WindowRequest, NamesAWindowByFourArguments) {
    EXPECT_EQ(encodeJson(WindowRequest::parse(words("501 a.b 123 07")).value()),
              R"({"appId":"a.b","pid":501,"started":"123","windowId":7})");
    expectRefused([](const std::string& line) { return WindowRequest::parse(words(line)); },
                  {"", "501 a.b 123", "501 a.b 123 7 8", "0 a.b 123 7", "501 a.b x 7",
                   "501 a.b 123 0", "501 a.b 123 x"});
    const WindowRecord nameless{.id = 7, .pid = 501, .started = "-"};
    EXPECT_EQ(WindowRequest::words(nameless), std::nullopt);
}

TEST(ArrangePolicy, RefusesSystemPromptsAndOurOwnWindows) {
    EXPECT_TRUE(ArrangePolicy::mayArrange(std::nullopt));
    expectVerdicts(ArrangePolicy::mayArrange, {"", "io.velmo", "com.apple.passwords"},
                   {"COM.APPLE.SECURITYAGENT", "com.apple.LocalAuthentication.UIAgent",
                    "com.apple.coreservices.uiagent", "Io.Velmo.Host"});
    const AppTarget target{.pid = 501, .appId = "a.B", .started = "123"};
    EXPECT_TRUE(ArrangePolicy::identityMatches(target, "A.b", "/A.app", 123));
    EXPECT_FALSE(ArrangePolicy::identityMatches(target, "A.b", "/A.app", 124));
    EXPECT_FALSE(ArrangePolicy::identityMatches(target, "a.c", "/A.app", 123));
}

TEST(AppTarget, ReadsBackTheStartTimeItSentToThePhone) {
    for (const auto time : {std::optional<std::int64_t>(), {0}, {-5}, {1}, {INT64_MAX}}) {
        const auto target = AppTarget::parse(Strings{"501", "a.b", AppTarget::startedText(time)});
        ASSERT_TRUE(target);
        EXPECT_EQ(target->started.has_value(), time > 0);
        EXPECT_TRUE(ArrangePolicy::identityMatches(*target, "a.b", {}, time));
        EXPECT_NE(ArrangePolicy::identityMatches(*target, "a.b", {}, 7), time > 0);
    }
}

TEST(FramePlan, ShrinksFirstAndMovesTwice) {
    const auto from = [&](std::optional<WindowBounds> now, bool resizable = true) {
        return FramePlan::steps(now, {10, 20, 400, 700}, resizable);
    };
    using FramePlan::Size;
    const FramePlan::Position move{.x = 10, .y = 20};
    const Size size{.width = 400, .height = 700};
    const Size narrower{.width = 400, .height = 600};
    const Size lower{.width = 300, .height = 700};
    EXPECT_THAT(from({{0, 0, 800, 600}}), ElementsAre(narrower, move, size, move));
    EXPECT_THAT(from({{0, 0, 300, 701}}), ElementsAre(lower, move, size, move));
    EXPECT_THAT(from({{0, 0, 400, 700}}), ElementsAre(move, size, move));
    EXPECT_THAT(from({}), ElementsAre(move, size, move));
    EXPECT_THAT(from({{0, 0, 800, 600}}, false), ElementsAre(move));
}

TEST(FramePlan, LandsWithinFortyPoints) {
    EXPECT_FALSE(FramePlan::landed({}, {}, false));
    const std::array numbers{&WindowBounds::x, &WindowBounds::y, &WindowBounds::width,
                             &WindowBounds::height};
    for (const double off : {40.0, -40.0, 40.5, -40.5, std::nan("")}) {
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            WindowBounds bounds;
            bounds.*numbers[i] = off;
            EXPECT_EQ(FramePlan::landed(bounds, {}, true), std::abs(off) == 40) << i;
            EXPECT_EQ(FramePlan::landed(bounds, {}, false), i >= 2 || std::abs(off) == 40) << i;
        }
    }
}

TEST(ScreenGeometry, TurnsTheVerticalAxisOver) {
    EXPECT_EQ(ScreenGeometry::topLeft({1, 1000, 5, 900}, 990), (WindowBounds{1, -910, 5, 900}));
}

TEST(DisplayRecord, IsWrittenForThePhone) {
    DisplayRecord display{.id = "1", .name = "A", .frame = {.y = 5}, .primary = true};
    display.safe = {.top = 1, .left = 2, .bottom = 3, .right = 4};
    EXPECT_EQ(encodeJson(display),
              R"({"builtin":false,"frame":{"height":0,"width":0,"x":0,"y":5},"id":"1","name":"A",)"
              R"("primary":true,"safe":{"bottom":3,"left":2,"right":4,"top":1},"scale":1,)"
              R"("work":{"height":0,"width":0,"x":0,"y":0}})");
    const FrameRecord frame{.x = 1, .y = 2, .width = 3, .height = 4, .resized = true};
    EXPECT_EQ(encodeJson(frame), R"({"height":4,"resized":true,"width":3,"x":1,"y":2})");
}

} // namespace
} // namespace velmo
