#include "tools/velmo-power/HoldLimits.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace velmo {
namespace {

TEST(HoldLimits, DurationsAreWholeNumbersWithUnits) {
    for (const auto& [text, seconds] :
         std::initializer_list<std::pair<std::string_view, std::optional<double>>>{
             {"90", 90},     {"90s", 90}, {"45m", 2700}, {"2h30m", 9000},      {"1d", 86400},
             {"1h1h", 7200}, {"", {}},    {"0", {}},     {"0s", {}},           {"m", {}},
             {"1", 1},       {"1x", {}},  {"1h30", {}},  {"-1", {}},           {"+1s", {}},
             {"1.5h", {}},   {" 1h", {}}, {"1h ", {}},   {"99999999999s", {}}, {"999999999", {}},
             {"9999d", {}},  {"1H", {}}})
        EXPECT_EQ(parseDuration(text), seconds) << text;
}

TEST(HoldLimits, TimesOfDayAreTheNextOnes) {
    for (const auto& [text, minutes] :
         std::initializer_list<std::pair<std::string_view, std::optional<int>>>{{"17:00", 1020},
                                                                                {"7:05", 425},
                                                                                {"00:00", 0},
                                                                                {"23:59", 1439},
                                                                                {"24:00", {}},
                                                                                {"7:5", {}},
                                                                                {"7:60", {}},
                                                                                {"007:00", {}},
                                                                                {"-7:00", {}},
                                                                                {"7", {}},
                                                                                {":30", {}},
                                                                                {"7:-5", {}},
                                                                                {"7:000", {}},
                                                                                {"", {}}})
        EXPECT_EQ(parseTimeOfDay(text), minutes) << text;

    // 2026-03-28 12:00 in a zone that goes forward in the night after it.
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    ::tzset();
    const WallTime noon{1774695600};
    EXPECT_EQ(nextTimeOfDay(17 * 60, noon).sinceEpoch, noon.sinceEpoch + 5 * 3600);
    EXPECT_EQ(nextTimeOfDay(12 * 60, noon).sinceEpoch, noon.sinceEpoch + 23 * 3600);
    EXPECT_EQ(nextTimeOfDay(7 * 60, noon).sinceEpoch, noon.sinceEpoch + 18 * 3600);
    EXPECT_EQ(timeOfDayText(noon, noon), "12:00");
    EXPECT_EQ(timeOfDayText({noon.sinceEpoch - 86400}, noon), "2026-03-27 12:00");
    EXPECT_EQ(timeOfDayText({noon.sinceEpoch - 365 * 86400}, noon), "2025-03-28 12:00");
    ::unsetenv("TZ");
    ::tzset();
}

TEST(HoldLimits, TheFirstLimitReachedEndsTheHold) {
    const HoldLimits all{.seconds = 60,
                         .until = WallTime{1000},
                         .process = 7,
                         .onlyOnMains = true,
                         .untilLidOpens = true};
    const LimitWatch::Facts quiet{.now = {150}, .date = {900}, .onMains = true, .lidIsShut = false};
    EXPECT_EQ(LimitWatch(all, {100}).reached(quiet), std::nullopt);
    EXPECT_EQ(LimitWatch({}, {100}).waitsFor(quiet), "");

    const auto reached = [&](auto change) {
        LimitWatch::Facts facts = quiet;
        change(facts);
        return LimitWatch(all, {100}).reached(facts).value_or("nothing");
    };
    EXPECT_EQ(reached([](auto& f) { f.now = {159.9}; }), "nothing");
    EXPECT_EQ(reached([](auto& f) { f.now = {160}; }), "the time is over");
    EXPECT_TRUE(reached([](auto& f) { f.date = {1000}; }).starts_with("it is "));
    EXPECT_EQ(reached([](auto& f) { f.processHasEnded = true; }), "process 7 has ended");
    EXPECT_EQ(reached([](auto& f) { f.onMains = false; }), "the Mac runs on its battery");
    EXPECT_EQ(reached([](auto& f) { f.onMains.reset(); }), "nothing");
    EXPECT_EQ(reached([](auto& f) { f.lidIsShut.reset(); }), "nothing");

    // The limit waits for the lid twice: until it shuts, and until it opens.
    LimitWatch lid({.untilLidOpens = true}, {100});
    EXPECT_EQ(lid.reached(quiet), std::nullopt);
    EXPECT_EQ(lid.waitsFor(quiet), "until the lid shuts and opens");
    LimitWatch::Facts shut = quiet;
    shut.lidIsShut = true;
    EXPECT_EQ(lid.reached(shut), std::nullopt);
    EXPECT_EQ(lid.waitsFor(shut), "until the lid opens");
    EXPECT_EQ(lid.reached(quiet), "the lid is open");
}

} // namespace
} // namespace velmo
