#include "core/apps/NowPlayingParse.h"
#include "core/output/Output.h"

#include <gtest/gtest.h>

namespace velmo {
namespace {

using namespace NowPlayingParse;

std::string lineOf(const std::optional<NowPlayingInfo>& info) {
    return info ? Output::jsonLine(*info).value_or("not encodable") : "absent";
}

/// The fields are written with "^" between them.
std::string fields(std::string text) {
    std::ranges::replace(text, '^', '\x1F');
    return text;
}

TEST(NowPlayingParse, ReadsALineOfSpotify) {
    const std::pair<std::string, std::string> cases[] = {
        {" playing \n^T^A^L^215000^12.5^https://i/x^more",
         R"({"album":"L","app":"Spotify","artist":"A","artworkUrl":"https:\/\/i\/x","duration":215,)"
         R"("live":false,"playing":true,"position":12.5,"title":"T"})"},
        {"paused^ T ^missing value^ missing value ^215,5^0^http://i/x",
         R"({"app":"Spotify","artist":"","duration":0.2155,"live":false,"playing":false,)"
         R"("position":0,"title":"T"})"},
        {"paused^Missing Value^^^0^7",
         R"({"app":"Spotify","artist":"","live":false,"playing":false,"title":"Missing Value"})"},
        {"playing^T^A^^1e3^-1^HTTPS://i",
         R"({"app":"Spotify","artist":"A","duration":1,"live":false,"playing":true,"title":"T"})"},
        {"playing^T", R"({"app":"Spotify","artist":"","live":false,"playing":true,"title":"T"})"},
        {"stopped^T^A", "absent"},
        {"Playing^T^A", "absent"},
        {"playing^^A", "absent"},
        {"playing^missing value^A", "absent"},
        {"playing", "absent"},
        {"", "absent"},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(lineOf(spotify(fields(line))), expected) << line;
}

TEST(NowPlayingParse, ReadsALineOfMusic) {
    const std::string radio = R"("live":true,"playing":true,)";
    const std::pair<std::string, std::string> cases[] = {
        {"playing^T^A^L^180,5^7^^music track^2^ABC",
         R"({"album":"L","app":"Music","artist":"A","artworkKey":"music:ABC|T|A","duration":180.5,)"
         R"("live":false,"playing":true,"position":7,"title":"T"})"},
        {"paused^T^A^^180^x^^^0^ABC",
         R"({"app":"Music","artist":"A","duration":180,"live":false,"playing":false,"title":"T"})"},
        {"playing^Radio X^^L^180^7^Some Band \u2013 Some Song^URL track",
         R"({"album":"L","app":"Music","artist":"Some Band",)" + radio
             + R"("station":"Radio X","title":"Some Song"})"},
        {"playing^Radio X^A^^^^News",
         R"({"app":"Music","artist":"A",)" + radio + R"("station":"Radio X","title":"News"})"},
        {"playing^Radio X^^^^^News",
         R"({"app":"Music","artist":"Radio X",)" + radio + R"("title":"News"})"},
        {"playing^News^^^^^News", R"({"app":"Music","artist":"",)" + radio + R"("title":"News"})"},
        {"playing^Song^^^^^Band - Song",
         R"({"app":"Music","artist":"Band",)" + radio + R"("title":"Song"})"},
        {"playing^^^^^^News^^+02^", R"({"app":"Music","artist":"","artworkKey":"music:|News|",)"
                                        + radio + R"("title":"News"})"},
        {"playing^R^A^^0^5^^URL track",
         R"({"app":"Music","artist":"A",)" + radio + R"("title":"R"})"},
        {"playing^R^A^^180^^^URL track",
         R"({"app":"Music","artist":"A","duration":180,"live":false,"playing":true,"title":"R"})"},
        {"playing^R^A^^^5^^url track^2.0^I",
         R"({"app":"Music","artist":"A","live":false,"playing":true,"title":"R"})"},
        {"playing^R^^^^^^^-2^I",
         R"({"app":"Music","artist":"","live":false,"playing":true,"title":"R"})"},
        {"playing^R^^^^^^^99999999999999999999^I",
         R"({"app":"Music","artist":"","live":false,"playing":true,"title":"R"})"},
        {"stopped^T^A", "absent"},
        {"playing^^A^L^180", "absent"},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(lineOf(music(fields(line))), expected) << line;
}

TEST(NowPlayingParse, SplitsAStreamTitleAtTheFirstDashBetweenSpaces) {
    const std::pair<std::string_view, std::optional<StreamTitle>> cases[] = {
        {"A - B", StreamTitle{"A", "B"}},
        {"\n A \u00A0-  B \u2013 C - D\t", StreamTitle{"A \u00A0-  B", "C - D"}},
        {"A \u2014 B \u2013 C - D", StreamTitle{"A", "B \u2013 C - D"}},
        {"A  -  B", StreamTitle{"A", "B"}},
        {"A -  - B", StreamTitle{"A", "- B"}},
        {"A-B", {}},
        {" - B", {}},
        {"A - ", {}},
        {"A -\tB", {}},
        {"A \u2212 B", {}},
        {"", {}},
    };
    for (const auto& [text, split] : cases)
        EXPECT_EQ(splitStreamTitle(text), split) << text;
}

TEST(NowPlayingParse, ReadsANumberAsPlayersWriteIt) {
    const std::pair<std::string_view, double> accepted[] = {
        {"0", 0},         {"-0", 0},
        {"215,5", 215.5}, {" \t\u00A07 ", 7},
        {".5", 0.5},      {"5.", 5},
        {"+1.25", 1.25},  {"1.0E+4", 1e4},
        {"2E-2", 0.02},   {"007.50", 7.5},
        {"-1e-999", 0},   {"0e999", 0},
        {"0.1", 0.1},     {"-0.0", 0},
        {"1e308", 1e308}, {"123456789012345678901234567890", 123456789012345678901234567890.0}};
    for (const auto& [text, value] : accepted) {
        EXPECT_EQ(number(text), value) << text;
        EXPECT_FALSE(std::signbit(number(text).value_or(-1))) << text;
    }
    for (const std::string_view text :
         {"",   " ",   "12\n",  "\n12", "-1",  "-0.1", "1,234.5", "1.2.3", ".",   "+",  "e5",
          "1e", "1e+", "1e1.5", "0x10", "inf", "nan",  "1e309",   "1 2",   "--1", "1f", "\u0661"})
        EXPECT_FALSE(number(text)) << text;
}

TEST(NowPlayingParse, PicksWhatPlaysElseTheFirst) {
    const NowPlayingInfo a{.title = "a"};
    const NowPlayingInfo b{.title = "b", .playing = true};
    const NowPlayingInfo c{.title = "c", .playing = true};
    EXPECT_EQ(pick(std::vector{a, b, c}), b);
    EXPECT_EQ(pick(std::vector{a, a}), a);
    EXPECT_FALSE(pick({}));
    EXPECT_TRUE(isAutomationDenied(-1743));
    EXPECT_FALSE(isAutomationDenied(1743) || isAutomationDenied(std::nullopt));
    EXPECT_EQ(Output::jsonLine(NowPlayingPermission::of("Music")),
              R"({"app":"Music","permission":"automation"})");
}

} // namespace
} // namespace velmo
