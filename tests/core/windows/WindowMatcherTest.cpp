#include "core/windows/WindowMatcher.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmo {
namespace {

using Title = std::optional<std::string>;
using Facts = std::vector<AXWindowFacts>;
using Index = std::optional<std::size_t>;

/// Returns a window at x, or at an unknown place.
AXWindowFacts at(std::optional<double> x, Title title = {}, bool isMinimized = false) {
    const auto bounds = x.transform([](double left) { return WindowBounds{.x = left}; });
    return {.title = title, .bounds = bounds, .minimized = isMinimized};
}

AXWindowFacts minimized(std::optional<double> x, Title title = {}) {
    return at(x, title, true);
}

AXWindowFacts numbered(std::uint32_t number, AXWindowFacts facts) {
    facts.windowId = number;
    return facts;
}

/// Looks for the window with number 7, which is at 0 unless its place is unknown.
Index resolved(bool onScreen, const Title& title, const Facts& facts, bool hasPlace = true) {
    const auto bounds = hasPlace ? at(0).bounds : std::nullopt;
    return WindowMatcher::resolve({.id = 7, .title = title, .bounds = bounds, .onScreen = onScreen},
                                  facts);
}

TEST(WindowMatcher, FindsAWindowOnScreen) {
    EXPECT_EQ(resolved(true, "a", {at(0, "a"), numbered(7, at(900, "b"))}), 1);
    EXPECT_EQ(resolved(true, {}, {at({}), at(20), at(-10), at(10)}), 2); // by place alone
    EXPECT_EQ(resolved(true, {}, {at(24.5), at(std::nan("")), at(24)}), 2);
    EXPECT_EQ(resolved(true, "", {at(20, ""), at(10, "b")}), 1);
    EXPECT_EQ(resolved(true, {}, {numbered(8, at(5)), at(10)}), 0);
    EXPECT_EQ(resolved(true, "a", {at(0, "b"), at(24, "a"), at(12, "a"), at(12, "a")}), 2);
    EXPECT_EQ(resolved(true, "a", {at(0, "b"), at({}, "a")}), 1); // wherever it is
    EXPECT_EQ(resolved(true, "a", {at(900, "a"), at({}, "a"), at(9, "b")}), 2);
    EXPECT_EQ(resolved(true, "a", {at(900, "a"), at(-900, "a")}), std::nullopt);
    EXPECT_EQ(resolved(true, "a", {at(10, "A"), at(900, "a ")}), 0);
    EXPECT_EQ(resolved(true, "caf\u00E9", {at(0), at(900, "cafe\u0301")}), 1);
    EXPECT_EQ(resolved(true, "a", {at(0, "a")}, false), std::nullopt);
}

TEST(WindowMatcher, FindsAWindowThatIsNotOnScreen) {
    EXPECT_EQ(resolved(false, "a", {minimized(0, "a"), numbered(7, at(900))}), 1);
    // The only minimized window with the title is found.
    EXPECT_EQ(resolved(false, "a", {minimized(0, "b"), minimized({}, "a"), at(0, "a")}), 1);
    EXPECT_EQ(resolved(false, "a", {minimized(0, "b"), minimized(0, "a")}, false), 1);
    // The only minimized window is found.
    EXPECT_EQ(resolved(false, "", {at(0), minimized({}, "b")}), 1);
    EXPECT_EQ(resolved(false, "a", {at(0), minimized(900, "")}), 1);
    EXPECT_EQ(resolved(false, {}, {minimized(0)}, false), std::nullopt);
    EXPECT_EQ(resolved(false, {}, {at(0), numbered(8, minimized(900)), minimized(900)}), 2);
    EXPECT_EQ(resolved(false, "a", {at(900), minimized(10, "b"), at(5, "c")}), 2);
    // Any window without a number may be found.
    EXPECT_EQ(resolved(false, {}, {minimized(20), minimized(9), numbered(8, at(0)), at(1)}), 3);
    EXPECT_EQ(resolved(false, "a", {minimized(900, "a"), minimized(20, "a"), at(0, "b")}), 1);
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
