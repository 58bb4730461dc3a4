#include "core/apps/NowPlayingParse.h"
#include "core/output/Output.h"
#include "tests/Texts.h"

#include <cmath>

namespace velmo {
namespace {

using namespace NowPlayingParse;

/// Separates the fields of a line, which are written with "^" between them.
std::string fields(std::string line) {
    std::ranges::replace(line, '^', '\x1F');
    return line;
}

/// Returns the record as JSON without quotation marks.
std::string bare(const NowPlayingInfo& info) {
    std::string json = Output::jsonLine(info).value();
    std::erase(json, '"');
    return json;
}

TEST(NowPlayingParse, ReadsALineOfSpotify) {
    const std::pair<std::string, std::string> cases[] = {
        {" playing \n^T^A^L^215000^12.5^https://i^more",
         "{album:L,app:Spotify,artist:A,artworkUrl:https:\\/\\/i,duration:215,live:false,"
         "playing:true,position:12.5,title:T}"},
        {"paused^ T ^missing value^ missing value ^215,5^0^http://i",
         "{app:Spotify,artist:,duration:0.2155,live:false,playing:false,position:0,title:T}"},
        {"paused^Missing Value^A^^0^7^HTTPS://i",
         "{app:Spotify,artist:A,live:false,playing:false,title:Missing Value}"},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(bare(spotify(fields(line)).value()), expected) << line;
    expectVerdicts(
        [](const std::string& line) { return spotify(fields(line)); }, {"playing^T"},
        {"stopped^T", "Playing^T", "playing^^A", "playing^missing value", "playing", ""});
}

TEST(NowPlayingParse, ReadsALineOfMusic) {
    const std::pair<std::string, std::string> cases[] = {
        {"playing^T^A^L^180,5^7^^music track^2^ABC",
         "{album:L,app:Music,artist:A,artworkKey:music:ABC|T|A,duration:180.5,live:false,"
         "playing:true,position:7,title:T}"},
        {"paused^T^^^180^x^^URL track",
         "{app:Music,artist:,duration:180,live:false,playing:false,title:T}"},
        {"paused^T^^^0^5^^url track", "{app:Music,artist:,live:false,playing:false,title:T}"},
        {"paused^T^^^0^5^^URL track", "{app:Music,artist:,live:true,playing:false,title:T}"},
        {"paused^T^^L^180^7^S", "{album:L,app:Music,artist:T,live:true,playing:false,title:S}"},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(bare(music(fields(line)).value()), expected) << line;
    expectVerdicts([](const std::string& line) { return music(fields(line)); },
                   {"paused^^^^^^S", "playing^T"}, {"stopped^T^A", "playing^^A^L^180"});
}

TEST(NowPlayingParse, CreditsAStreamToItsArtistAndItsStation) {
    // Given: track, artist and stream. Expected: title, artist and station.
    const std::pair<std::string, std::string> cases[] = {
        {"X^^^^^B \u2013 S", "S|B|X"}, {"X^A^^^^B - S", "S|B|X"}, {"S^^^^^B - S", "S|B|-"},
        {"B^^^^^B - S", "S|B|-"},      {"X^A^^^^S", "S|A|X"},     {"X^^^^^S", "S|X|-"},
        {"S^^^^^S", "S||-"},           {"^^^^^S", "S||-"}};
    for (const auto& [line, credits] : cases) {
        const auto info = music(fields("playing^" + line)).value();
        EXPECT_EQ(info.title + "|" + info.artist + "|" + info.station.value_or("-"), credits);
    }
}

TEST(NowPlayingParse, HasAnArtworkKeyIfTheArtworkCountIsPositive) {
    const auto key = [](const std::string& count) {
        return music(fields("playing^T^A^^^^^^" + count + "^I")).value().artworkKey;
    };
    expectVerdicts(key, {"1", "+02"}, {"", "0", "-2", "2.0", "99999999999999999999"});
}

TEST(NowPlayingParse, SplitsAStreamTitleAtTheFirstDashBetweenSpaces) {
    const auto splits = [](std::string_view text, std::string_view artist, std::string_view title) {
        return splitStreamTitle(text) == StreamTitle{.artist = artist, .title = title};
    };
    EXPECT_TRUE(splits("\n A \u00A0-  B \u2013 C - D\t", "A \u00A0-  B", "C - D"));
    EXPECT_TRUE(splits("A \u2014 B \u2013 C - D", "A", "B \u2013 C - D"));
    EXPECT_TRUE(splits("A  -  B", "A", "B"));
    EXPECT_TRUE(splits("A -  - B", "A", "- B"));
    expectRefused(splitStreamTitle, {"A-B", " - B", "A - ", "A -\tB", "A \u2212 B", ""});
}

TEST(NowPlayingParse, ReadsANumberAsPlayersWriteIt) {
    const std::pair<std::string_view, double> accepted[] = {
        {"-0", 0},
        {"215,5", 215.5},
        {" \t\u00A07 ", 7},
        {".5", 0.5},
        {"5.", 5},
        {"2E-2", 0.02},
        {"+1.25e+1", 12.5},
        {"007.50", 7.5},
        {"-1e-999", 0},
        {"1e308", 1e308},
        {"123456789012345678901234567890", 123456789012345678901234567890.0}};
    for (const auto& [text, value] : accepted)
        EXPECT_TRUE(number(text) == value && !std::signbit(*number(text))) << text;
    expectRefused(number, {"", " ", "12\n", "\n12", "1 2", "\u0661"});
    expectRefused(number,
                  words("-1 -0.1 1,234.5 1.2.3 . + e5 1e 1e+ 1e1.5 0x10 inf nan 1e309 --1 1f"));
}

TEST(NowPlayingParse, PicksWhatPlaysElseTheFirst) {
    const NowPlayingInfo a{.title = "a"};
    const NowPlayingInfo b{.title = "b", .playing = true};
    EXPECT_EQ(pick(std::vector{a, b, NowPlayingInfo{.playing = true}}), b);
    EXPECT_EQ(pick(std::vector{a, NowPlayingInfo{}}), a);
    EXPECT_FALSE(pick({}));
}

TEST(NowPlayingParse, KnowsARefusalByItsNumber) {
    EXPECT_TRUE(isAutomationDenied(-1743) && !isAutomationDenied(1743) && !isAutomationDenied({}));
}

TEST(NowPlayingPermission, NamesThePermissionAndThePlayer) {
    EXPECT_EQ(Output::jsonLine(NowPlayingPermission::of("Music")),
              R"({"app":"Music","permission":"automation"})");
}

} // namespace
} // namespace velmo
