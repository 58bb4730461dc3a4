#include "core/probes/ScreenPrivacy.h"

#include "tests/Texts.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace velmo {
namespace {

/// Returns a window for each letter: (p)lain, (u)nshared, of a (s)ensitive application, with a
/// private (t)itle and unshared, or (a)sking for a password. The window of a capital letter is
/// transparent; the windows after a dot lie beside 0, 0.
std::vector<ScreenWindowRow> windows(std::string_view letters) {
    const std::map<char, ScreenWindowRow> kinds = {
        {'p', {.id = 1, .sharingState = 1}},
        {'u', {.id = 2, .title = "a"}},
        {'s', {.id = 3, .bundleId = "COM.Apple.Passwords", .title = "a", .sharingState = 1}},
        {'t', {.id = 4, .bundleId = "a.b", .title = "FENE\u0302TRE PRIVE\u0301E"}},
        {'a', {.id = 5, .bundleId = "com.apple.SecurityAgent", .sharingState = 1}}};
    std::vector<ScreenWindowRow> rows;
    WindowBounds bounds{-10, -10, 100, 100};
    for (const char letter : letters) {
        const bool isCapital = letter >= 'A' && letter <= 'Z';
        if (letter == '.') {
            bounds.x = 200;
            continue;
        }
        rows.push_back(kinds.at(isCapital ? static_cast<char>(letter + 32) : letter));
        rows.back().alpha = isCapital ? 0 : 0.005;
        rows.back().bounds = bounds;
    }
    return rows;
}

TEST(ScreenPrivacy, CountsWindowsAsPrivateByApplicationOrTitle) {
    EXPECT_THAT(ScreenPrivacy::privateIDs(windows("puTt.sa")), testing::ElementsAre(3, 4, 5));
}

TEST(ScreenPrivacy, APromptCountsWhenItCanBeSeen) {
    expectVerdicts([](const auto& l) { return ScreenPrivacy::authPromptOnScreen(windows(l)); },
                   {"a", "pA.a"}, {"", "pA", "stu"});
    auto unknown = windows("a");
    unknown[0].alpha = std::nan("");
    EXPECT_FALSE(ScreenPrivacy::authPromptOnScreen(unknown));
}

TEST(ScreenPrivacy, TheFrontmostSharedWindowUnderThePointDecides) {
    expectVerdicts([](const auto& l) { return ScreenPrivacy::protectedAt({0, 0}, windows(l)); },
                   {"s", "t", "a", "us", "Pt", "uuPUt", "sp"},
                   {"", "p", "u", "ps", "uupt", "Tp", "T", ".t", "p.s"});
}

TEST(WindowBounds, ContainTheirLeftAndTopEdgesOnly) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const WindowBounds& bounds : {WindowBounds{1, 2, 10, 20}, {11, 22, -10, -20}}) {
        for (const double x : {0.9, 1.0, 10.9, 11.0, std::nan("")}) {
            for (const double y : {1.9, 2.0, 21.9, 22.0})
                EXPECT_EQ(bounds.contains({.x = x, .y = y}), x >= 1 && x < 11 && y >= 2 && y < 22);
        }
    }
    for (const double odd : {0.0, infinity, -infinity, std::nan("")}) {
        EXPECT_FALSE((WindowBounds{5, 2, odd, 20}.contains({5, 5}))) << odd;
        EXPECT_FALSE((WindowBounds{1, 5, 10, odd}.contains({5, 5}))) << odd;
    }
    EXPECT_FALSE((WindowBounds{-infinity, 2, 10, 20}.contains({-infinity, 5})));
}

} // namespace
} // namespace velmo
