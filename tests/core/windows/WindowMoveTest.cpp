#include "core/windows/WindowMove.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using testing::ElementsAre;
using WindowMove::Refusal;

/// A Mac with one application, which has two windows.
struct Mac {
    std::optional<WindowMove::Process> process{{.bundleId = "a.b", .startTime = 123}};
    std::vector<CGWindowRow> rows{{.id = 7, .pid = 501, .title = "a"}, {.id = 7, .pid = 502}};
    std::vector<AXWindowFacts> facts{{.title = "b"}, {.title = "a", .bounds = WindowBounds{}}};
    bool resizable = true;
    int stubbornness = 0; ///< steps that are without effect
    int closesAfter = 0;  ///< steps until the application closes the window; 0 for never
    std::vector<FramePlan::Step> applied;

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

private:
    void apply(std::size_t window, const FramePlan::Step& step) {
        applied.push_back(step);
        if (applied.size() == std::size_t(closesAfter)) {
            rows.erase(rows.begin());
            facts.at(window) = {};
        }
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

TEST(WindowMove, TouchesNothingThatItMayNotMove) {
    const std::pair<Refusal, void (*)(Mac&, FrameRequest&)> cases[] = {
        {Refusal::otherProcess, [](Mac& mac, auto&) { mac.process.reset(); }},
        {Refusal::otherProcess, [](Mac& mac, auto&) { mac.process->startTime = 124; }},
        {Refusal::otherProcess, [](Mac& mac, auto&) { mac.process->bundleId = "a.c"; }},
        {Refusal::unmovable,
         [](Mac& mac, auto& asked) {
             asked.appId = "com.apple.SecurityAgent";
             mac.process->bundleId = "com.apple.securityagent";
         }},
        {Refusal::noWindow, [](Mac&, auto& asked) { asked.windowId = 8; }},
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
    }
}

} // namespace
} // namespace velmo
