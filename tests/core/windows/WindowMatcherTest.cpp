#include "core/windows/WindowMatcher.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <cmath>

namespace velmo {
namespace {

using Title = std::optional<std::string>;
using Index = std::optional<std::size_t>;

/// A window at x, or at an unknown place.
AXWindowFacts at(std::optional<double> x, Title title = {}, bool minimized = false,
                 std::optional<std::uint32_t> number = {}) {
    const auto bounds = x.transform([](double left) { return WindowBounds{left, 0, 800, 600}; });
    return {.windowId = number, .title = title, .bounds = bounds, .minimized = minimized};
}

AXWindowFacts minimized(std::optional<double> x, Title title = {}) {
    return at(x, title, true);
}

AXWindowFacts numbered(std::uint32_t number, std::optional<double> x, Title title = {}) {
    return at(x, title, false, number);
}

/// Asked for is the window with number 7 at 0.
Index resolved(const Title& title, bool onScreen, const std::vector<AXWindowFacts>& facts,
               std::optional<double> x = 0) {
    return WindowMatcher::resolve({7, title, at(x).bounds, onScreen}, facts);
}

TEST(WindowMatcher, FindsTheWindowThatIsMeant) {
    const std::tuple<Title, std::vector<AXWindowFacts>, Index> onScreen[] = {
        {"a", {at(0, "a"), numbered(7, 900, "b")}, 1},
        {{}, {at({}), at(20), at(-10), at(10)}, 2}, // by place alone
        {{}, {at(24.5), at(std::nan("")), at(24)}, 2},
        {"", {at(20, ""), at(10, "b")}, 1},
        {{}, {numbered(8, 5), at(10)}, 0}, // those with other numbers compete
        {"a", {at(0, "b"), at(24, "a"), at(12, "a"), at(12, "a")}, 2},
        {"a", {at(0, "b"), at({}, "a")}, 1}, // wherever it is
        {"a", {at(900, "a"), at({}, "a"), at(9, "b")}, 2},
        {"a", {at(900, "a"), at(-900, "a")}, {}},
        {"a", {at(10, "A"), at(900, "a ")}, 0},
        {"caf\u00E9", {at(0), at(900, "cafe\u0301")}, 1},
    };
    int row = 0;
    for (const auto& [title, facts, index] : onScreen)
        EXPECT_EQ(resolved(title, true, facts), index) << "row " << row++;
    EXPECT_EQ(resolved("a", true, {at(0, "a")}, {}), std::nullopt);

    const std::tuple<Title, std::vector<AXWindowFacts>, Index> offScreen[] = {
        {"a", {minimized(0, "a"), numbered(7, 900)}, 1},
        // the only minimized one with the title
        {"a", {minimized(0, "b"), minimized({}, "a"), at(0, "a")}, 1},
        {"", {at(0), minimized({}, "b")}, 1}, // the only minimized one
        {"a", {at(0), minimized(900, "")}, 1},
        {"a", {at(0), at(900, "b", true, 8), minimized(900)}, 2},
        {"a", {at(900), minimized(10, "b"), at(5, "c")}, 2}, // its title speaks against it
        {{}, {minimized(20), minimized(900), at(10)}, 2},    // any without number
        {"a", {minimized(900, "a"), minimized(20, "a"), at(0, "b")}, 1},
        {"a", {minimized(900, "a"), minimized(800, "a"), numbered(8, 0, "a")}, {}},
    };
    for (const auto& [title, facts, index] : offScreen)
        EXPECT_EQ(resolved(title, false, facts), index) << "row " << row++;
    EXPECT_EQ(resolved("a", false, {minimized(0, "b"), minimized(0, "a")}, {}), 1);
    EXPECT_EQ(resolved({}, false, {minimized(0)}, {}), std::nullopt);
}

RC_GTEST_PROP(WindowMatcher, OffScreenAWindowWithAnotherNumberIsAnotherWindow, ()) {
    auto facts = *rc::gen::container<std::vector<AXWindowFacts>>(rc::gen::apply(
        at, rc::gen::element<std::optional<double>>(std::nullopt, 0, 20, 30),
        rc::gen::element<Title>(std::nullopt, "", "a", "b"), rc::gen::arbitrary<bool>(),
        rc::gen::element<std::optional<std::uint32_t>>(std::nullopt, std::nullopt, 8)));
    const Title title = *rc::gen::element<Title>(std::nullopt, "", "a");
    const Index found = resolved(title, false, facts);
    RC_ASSERT((!found || !facts.at(*found).windowId));
    for (AXWindowFacts& fact : facts)
        fact = fact.windowId ? numbered(8, {}) : fact;
    RC_ASSERT(resolved(title, false, facts) == found);
    facts.push_back(numbered(7, {}));
    RC_ASSERT(resolved(title, *rc::gen::arbitrary<bool>(), facts) == facts.size() - 1);
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
