#include "core/windows/WindowMatcher.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmo {
namespace {

using Title = std::optional<std::string>;
using Facts = std::vector<AXWindowFacts>;
using Index = std::optional<std::size_t>;

/// A window at x, or at an unknown place.
AXWindowFacts at(std::optional<double> x, Title title = {}) {
    const auto bounds = x.transform([](double left) { return WindowBounds{.x = left}; });
    return {.title = title, .bounds = bounds};
}

AXWindowFacts minimized(std::optional<double> x, Title title = {}) {
    AXWindowFacts facts = at(x, title);
    facts.minimized = true;
    return facts;
}

AXWindowFacts numbered(std::uint32_t number, AXWindowFacts facts) {
    facts.windowId = number;
    return facts;
}

/// A search for the window with number 7, which is at 0 or at an unknown place.
struct Search {
    Title title = {};
    Facts facts;
    Index index = {}; ///< of the window that is to be found
    std::optional<double> x = 0;
};

void expectFound(bool onScreen, const std::vector<Search>& searches) {
    for (const auto& [title, facts, index, x] : searches) {
        const WindowTarget target{
            .id = 7, .title = title, .bounds = at(x).bounds, .onScreen = onScreen};
        EXPECT_EQ(WindowMatcher::resolve(target, facts), index)
            << testing::PrintToString(title) << facts.size();
    }
}

TEST(WindowMatcher, FindsAWindowOnScreen) {
    expectFound(
        true,
        {{.title = "a", .facts = {at(0, "a"), numbered(7, at(900, "b"))}, .index = 1},
         {.facts = {at({}), at(20), at(-10), at(10)}, .index = 2}, // by place alone
         {.facts = {at(24.5), at(std::nan("")), at(24)}, .index = 2},
         {.title = "", .facts = {at(20, ""), at(10, "b")}, .index = 1},
         {.facts = {numbered(8, at(5)), at(10)}, .index = 0}, // one with another number competes
         {.title = "a", .facts = {at(0, "b"), at(24, "a"), at(12, "a"), at(12, "a")}, .index = 2},
         {.title = "a", .facts = {at(0, "b"), at({}, "a")}, .index = 1}, // wherever it is
         {.title = "a", .facts = {at(900, "a"), at({}, "a"), at(9, "b")}, .index = 2},
         {.title = "a", .facts = {at(900, "a"), at(-900, "a")}},
         {.title = "a", .facts = {at(10, "A"), at(900, "a ")}, .index = 0},
         {.title = "caf\u00E9", .facts = {at(0), at(900, "cafe\u0301")}, .index = 1},
         {.title = "a", .facts = {at(0, "a")}, .x = {}}});
}

TEST(WindowMatcher, FindsAWindowThatIsNotOnScreen) {
    expectFound(
        false,
        {{.title = "a", .facts = {minimized(0, "a"), numbered(7, at(900))}, .index = 1},
         // the only minimized one with the title
         {.title = "a", .facts = {minimized(0, "b"), minimized({}, "a"), at(0, "a")}, .index = 1},
         {.title = "a", .facts = {minimized(0, "b"), minimized(0, "a")}, .index = 1, .x = {}},
         {.title = "", .facts = {at(0), minimized({}, "b")}, .index = 1}, // the only minimized one
         {.title = "a", .facts = {at(0), minimized(900, "")}, .index = 1},
         {.facts = {minimized(0)}, .x = {}},
         {.facts = {at(0), numbered(8, minimized(900)), minimized(900)}, .index = 2},
         // the only minimized one has another title
         {.title = "a", .facts = {at(900), minimized(10, "b"), at(5, "c")}, .index = 2},
         // among all without a number
         {.facts = {minimized(20), minimized(900), numbered(8, at(0)), at(10)}, .index = 3},
         {.title = "a", .facts = {minimized(900, "a"), minimized(20, "a"), at(0, "b")}, .index = 1},
         {.title = "a", .facts = {minimized(900, "a"), minimized(800, "a"), at(99, "a")}}});
}

TEST(WindowMatcher, TheFrontWindowIsTheFirstOnScreenOfTheFrontmostProcess) {
    std::vector<CGWindowRow> rows(4, {.pid = 9, .onScreen = true});
    rows[0].pid = 5;
    rows[1].onScreen = false;
    EXPECT_EQ(WindowMatcher::frontIndex(rows, 9), 2U);
    EXPECT_EQ(WindowMatcher::frontIndex(rows, 6), std::nullopt);
    EXPECT_EQ(WindowMatcher::frontIndex(rows, {}), std::nullopt);
}

} // namespace
} // namespace velmo
