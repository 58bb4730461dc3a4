#include "core/windows/WindowMove.h"

#include "core/windows/WindowRaise.h"
#include "tests/Texts.h"

#include <gmock/gmock.h>

#include <utility>

namespace velmo {
namespace {

using testing::ElementsAre;
using WindowMove::Refusal;

const WindowBounds place{.width = 100, .height = 100};

/// A Mac with one application, which has two windows and is not in front.
struct Mac {
    std::optional<AppProcess> process{{.bundleId = "a.b", .startTime = 123}};
    std::vector<CGWindowRow> rows{
        {.id = 7, .pid = 501, .title = "a", .bounds = place},
        {.id = 9, .pid = 501, .layer = 25, .bounds = place, .onScreen = true},
        {.id = 8, .pid = 501, .title = "b", .bounds = place, .onScreen = true},
        {.id = 7, .pid = 502, .bounds = place, .onScreen = true}};
    std::vector<AXWindowFacts> facts{{.title = "b"}, {.title = "a", .bounds = place}};
    bool resizable = true;
    int stubbornness = 0; ///< steps to move, or attempts to raise, that are without effect
    int closesAfter = 0;  ///< steps until the application closes the window; 0 for never
    bool canRaise = true;
    bool canActivate = true;
    std::vector<FramePlan::Step> applied;
    Strings raised; ///< the steps to raise it
    std::vector<WindowRaise::Step> unsettled;
    std::int32_t frontmost = 502;
    std::size_t touched = 0; ///< the window that the last step was for

    std::expected<FrameRecord, Refusal> move(const FrameRequest& request) {
        return WindowMove::perform(
            request,
            {.process = [&](std::int32_t pid) { return pid == 501 ? process : std::nullopt; },
             .windowList = [&] { return rows; },
             .windows = [&](std::int32_t /*pid*/) { return facts; },
             .isResizable = [&](std::size_t /*window*/) { return resizable; },
             .apply = [&](std::size_t window, const auto& step) { apply(window, step); },
             .bounds = [&](std::size_t window) { return facts.at(window).bounds; }});
    }

    std::expected<FocusOutcome, WindowRaise::Refusal> raise(const WindowRequest& request) {
        return WindowRaise::perform(
            request,
            {.process = [&](std::int32_t pid) { return pid == 501 ? process : std::nullopt; },
             .windowList = [&] { return rows; },
             .windows = [&](std::int32_t /*pid*/) { return facts; },
             .apply = [&](std::size_t window, WindowRaise::Step step) { apply(window, step); },
             .settle = [&] { settle(); },
             .frontmostPid = [&] { return frontmost; }});
    }

private:
    void close(std::size_t window) {
        rows.erase(rows.begin());
        facts.at(window) = {};
    }

    void apply(std::size_t window, const FramePlan::Step& step) {
        touched = window;
        applied.push_back(step);
        if (applied.size() == std::size_t(closesAfter))
            close(window);
        if (--stubbornness >= 0 || !facts.at(window).bounds)
            return;
        auto& bounds = *facts.at(window).bounds;
        if (const auto* position = std::get_if<FramePlan::Position>(&step)) {
            bounds.x = position->x;
            bounds.y = position->y;
        } else {
            const auto& size = std::get<FramePlan::Size>(step);
            bounds.width = size.width;
            bounds.height = size.height;
        }
    }

    void apply(std::size_t window, WindowRaise::Step step) {
        touched = window;
        unsettled.push_back(step);
        raised.emplace_back(rawText(step));
        if (raised.size() == std::size_t(closesAfter))
            close(window);
    }

    void settle() {
        for (const WindowRaise::Step step : std::exchange(unsettled, {})) {
            if (stubbornness > 0)
                continue;
            if (step == WindowRaise::Step::unminimize)
                facts.at(touched).minimized = false;
            else if (step == WindowRaise::Step::activate && canActivate)
                frontmost = 501;
            else if (step == WindowRaise::Step::raise && canRaise)
                rows.front().onScreen = !facts.at(touched).minimized;
        }
        --stubbornness;
    }
};

const FrameRequest request{.pid = 501,
                           .appId = "A.b",
                           .started = "123",
                           .windowId = 7,
                           .frame = {.x = 10, .y = 20, .width = 300, .height = 400}};

TEST(WindowMove, TriesTwiceAndTellsWhereTheWindowIs) {
    const FramePlan::Position position{.x = 10, .y = 20};
    const FramePlan::Size size{.width = 300, .height = 400};
    Mac mac{.stubbornness = 3};
    EXPECT_EQ(mac.move(request), (FrameRecord{10, 20, 300, 400, true}));
    EXPECT_THAT(mac.applied, ElementsAre(position, size, position, position, size, position));
    mac.resizable = false;
    FrameRequest further = request;
    further.frame = {.x = 50, .y = 60, .width = 1, .height = 1};
    EXPECT_EQ(mac.move(further), (FrameRecord{50, 60, 300, 400, false}));

    Mac stubborn{.stubbornness = 100};
    EXPECT_EQ(stubborn.move(request), std::unexpected(Refusal::notLanded));
    EXPECT_EQ(stubborn.applied.size(), 6U);
    stubborn.facts[1] = {.windowId = 7}; // tells no place
    EXPECT_EQ(stubborn.move(request), std::unexpected(Refusal::notLanded));
}

TEST(WindowMove, TellsThatTheWindowWasClosedMeanwhile) {
    for (const int closesAfter : {1, 3, 5, 6}) {
        Mac mac{.stubbornness = 100, .closesAfter = closesAfter};
        EXPECT_EQ(mac.move(request), std::unexpected(Refusal::noWindow)) << closesAfter;
        EXPECT_EQ(mac.applied.size(), closesAfter <= 3 ? 3U : 6U) << closesAfter;
    }
}

TEST(WindowMove, MovesTheOneThatIsMeantOfTwoWindowsOfOneTitle) {
    const AXWindowFacts minimized{.title = "a", .bounds = request.frame, .minimized = true};
    const AXWindowFacts shown{.title = "a", .bounds = place};
    for (const bool onScreen : {false, true}) {
        Mac mac{.facts = {minimized, shown}};
        mac.rows[0].onScreen = onScreen;
        EXPECT_TRUE(mac.move(request));
        EXPECT_EQ(mac.touched, onScreen ? 1U : 0U);
    }
}

TEST(WindowRaise, TriesTwiceAndTellsWhetherTheWindowIsInFront) {
    const struct {
        Mac mac;
        FocusOutcome outcome;
        std::string steps;
    } cases[] = {
        {{}, {.raised = true, .minimized = false, .attempts = 1}, "raise activate"},
        {{.facts = {{.title = "a", .minimized = true}}},
         {.raised = true, .minimized = true, .attempts = 1},
         "unminimize raise activate"},
        {{.facts = {{.title = "a", .minimized = true}}, .stubbornness = 1},
         {.raised = true, .minimized = true, .attempts = 2},
         "unminimize raise activate unminimize raise activate"},
        {{.stubbornness = 2},
         {.raised = false, .minimized = false, .attempts = 2},
         "raise activate raise activate"},
        // Another window of the application stays in front, or another application does.
        {{.canRaise = false},
         {.raised = false, .minimized = false, .attempts = 2},
         "raise activate raise activate"},
        {{.canActivate = false},
         {.raised = false, .minimized = false, .attempts = 2},
         "raise activate raise activate"},
    };

    for (const auto& [start, outcome, steps] : cases) {
        Mac mac = start;
        EXPECT_EQ(mac.raise(request.window()), outcome);
        EXPECT_EQ(mac.raised, words(steps));
        EXPECT_EQ(mac.touched, mac.facts.size() - 1);
    }
}

TEST(WindowRaise, TellsThatTheWindowWasClosedMeanwhile) {
    for (const int closesAfter : {1, 2, 3, 4}) {
        Mac mac{.stubbornness = 2, .closesAfter = closesAfter};
        EXPECT_EQ(mac.raise(request.window()), std::unexpected(WindowRaise::Refusal::noWindow));
        EXPECT_EQ(mac.raised.size(), closesAfter <= 2 ? 2U : 4U) << closesAfter;
    }
}

TEST(WindowMove, TouchesNothingThatItMayNotMoveOrRaise) {
    const std::pair<Refusal, void (*)(Mac&, FrameRequest&)> cases[] = {
        {Refusal::otherProcess, [](Mac& mac, auto&) { mac.process.reset(); }},
        {Refusal::otherProcess, [](Mac& mac, auto&) { mac.process->startTime = 124; }},
        {Refusal::otherProcess, [](Mac& mac, auto&) { mac.process->bundleId = "a.c"; }},
        {Refusal::otherProcess,
         [](Mac& mac, auto&) { mac.process->bundleId = "com.apple.securityagent"; }},
        {Refusal::unmovable,
         [](Mac& mac, auto& asked) {
             asked.appId = "com.apple.SecurityAgent";
             mac.process->bundleId = "com.apple.securityagent";
         }},
        {Refusal::noWindow, [](Mac&, auto& asked) { asked.windowId = 10; }},
        {Refusal::noWindow, [](Mac& mac, auto&) { mac.rows.erase(mac.rows.begin()); }},
        {Refusal::noWindow, [](Mac& mac, auto&) { mac.facts.clear(); }},
        // The window was closed after it was listed; another one of the same title is in the same
        // place.
        {Refusal::noWindow,
         [](Mac& mac, auto&) {
             mac.rows[0].onScreen = true;
             mac.facts[1].windowId = 8;
         }},
    };
    for (const auto& [refusal, change] : cases) {
        Mac mac;
        FrameRequest changed = request;
        change(mac, changed);
        EXPECT_EQ(mac.move(changed), std::unexpected(refusal)) << rawText(refusal);
        EXPECT_TRUE(mac.applied.empty());
        const auto outcome = mac.raise(changed.window());
        ASSERT_FALSE(outcome);
        EXPECT_EQ(rawText(outcome.error()), rawText(refusal));
        EXPECT_TRUE(mac.raised.empty());
    }
}

} // namespace
} // namespace velmo
