#include "core/probes/ScreenPrivacy.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace velmo {
namespace {

/// A window for each letter: plain, unshared, of a sensitive application, with a private title (not
/// shared), asking for a password; capital letters: transparent. After a dot: not at 0, 0.
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

TEST(ScreenPrivacy, PrivateWindowsAreTheSensitiveAndThePrivatelyTitled) {
    EXPECT_THAT(ScreenPrivacy::privateIDs(windows("puTt.sa")), testing::ElementsAre(3, 4, 5));
    EXPECT_THAT(ScreenPrivacy::privateIDs(windows("pu")), testing::IsEmpty());
}

TEST(ScreenPrivacy, APromptCountsWhenItCanBeSeen) {
    for (const char* letters : {"a", "pA.a"})
        EXPECT_TRUE(ScreenPrivacy::authPromptOnScreen(windows(letters))) << letters;
    for (const char* letters : {"", "pA", "stu"})
        EXPECT_FALSE(ScreenPrivacy::authPromptOnScreen(windows(letters))) << letters;
    auto unknown = windows("a");
    unknown[0].alpha = std::nan("");
    EXPECT_FALSE(ScreenPrivacy::authPromptOnScreen(unknown));
}

TEST(ScreenPrivacy, TheFrontmostSharedWindowUnderThePointDecides) {
    for (const char* letters : {"s", "t", "a", "us", "Pt", "uuPUt", "sp"})
        EXPECT_TRUE(ScreenPrivacy::protectedAt({0, 0}, windows(letters))) << letters;
    for (const char* letters : {"", "p", "u", "ps", "uupt", "Tp", "T", ".t", "p.s"})
        EXPECT_FALSE(ScreenPrivacy::protectedAt({0, 0}, windows(letters))) << letters;
}

TEST(WindowBounds, ContainTheirLeftAndTopEdgesOnly) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const WindowBounds bounds{1, 2, 10, 20};
    for (const ScreenPoint& inside : {ScreenPoint{1, 2}, {10.9, 21.9}}) {
        EXPECT_TRUE(bounds.contains(inside)) << inside.x;
        EXPECT_TRUE((WindowBounds{11, 22, -10, -20}.contains(inside))) << inside.x;
    }
    for (const ScreenPoint& outside : {ScreenPoint{11, 5}, {5, 22}, {0.9, 5}, {5, 1.9}}) {
        EXPECT_FALSE(bounds.contains(outside)) << outside.x;
        EXPECT_FALSE((WindowBounds{11, 22, -10, -20}.contains(outside))) << outside.x;
    }
    EXPECT_FALSE(bounds.contains({std::nan(""), 5}));
    for (const double odd : {0.0, infinity, -infinity, std::nan("")}) {
        EXPECT_FALSE((WindowBounds{5, 2, odd, 20}.contains({5, 5}))) << odd;
        EXPECT_FALSE((WindowBounds{1, 5, 10, odd}.contains({5, 5}))) << odd;
    }
    EXPECT_FALSE((WindowBounds{-infinity, 2, 10, 20}.contains({-infinity, 5})));
}

} // namespace
} // namespace velmo
