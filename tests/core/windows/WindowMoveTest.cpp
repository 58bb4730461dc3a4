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
        if (--stubbornness >= 0)
            return;
        auto& bounds = facts.at(window).bounds.value();
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

TEST(WindowMove, MovesTheWindowAndTellsWhereItIs) {
    Mac mac;
    const FrameRecord frame{.x = 10, .y = 20, .width = 300, .height = 400, .resized = true};
    EXPECT_EQ(mac.move(request), frame);
    mac.resizable = false;
    FrameRequest further = request;
    further.frame = {.x = 50, .y = 60, .width = 1, .height = 1};
    EXPECT_EQ(mac.move(further), (FrameRecord{.x = 50, .y = 60, .width = 300, .height = 400}));
}

TEST(WindowMove, TriesTwiceAndLeavesItThere) {
    const FramePlan::Position position{.x = 10, .y = 20};
    const FramePlan::Size size{.width = 300, .height = 400};
    Mac slow{.stubbornness = 3};
    EXPECT_TRUE(slow.move(request));
    EXPECT_THAT(slow.applied, ElementsAre(position, size, position, position, size, position));
    Mac stubborn{.stubbornness = 100};
    EXPECT_EQ(stubborn.move(request), std::unexpected(Refusal::notLanded));
    EXPECT_EQ(stubborn.applied.size(), 6U);
    Mac closed;
    closed.facts[1].bounds.reset();
    closed.facts[1].windowId = 7;
    closed.resizable = false;
    closed.stubbornness = 100;
    EXPECT_EQ(closed.move(request), std::unexpected(Refusal::notLanded)); // nothing to read back
}

TEST(WindowMove, TouchesNothingThatItMayNotMove) {
    const struct {
        Refusal refusal;
        void (*change)(Mac& mac, FrameRequest& request);
    } cases[] = {
        {Refusal::otherProcess, [](Mac& mac, FrameRequest&) { mac.process.reset(); }},
        {Refusal::otherProcess, [](Mac& mac, FrameRequest&) { mac.process->startTime = 124; }},
        {Refusal::otherProcess, [](Mac& mac, FrameRequest&) { mac.process->bundleId = "a.c"; }},
        {Refusal::unmovable,
         [](Mac& mac, FrameRequest& asked) {
             asked.appId = "com.apple.SecurityAgent";
             mac.process->bundleId = "com.apple.securityagent";
         }},
        {Refusal::noWindow, [](Mac&, FrameRequest& asked) { asked.windowId = 8; }},
        {Refusal::noWindow, [](Mac& mac, FrameRequest&) { mac.rows.erase(mac.rows.begin()); }},
        {Refusal::noWindow, [](Mac& mac, FrameRequest&) { mac.facts.clear(); }},
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
