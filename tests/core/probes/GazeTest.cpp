#include "core/probes/GazeIdle.h"
#include "core/probes/PointerTarget.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace velmo {
namespace {

TEST(GazeIdle, RoundsToMillisecondsWithinADay) {
    using Limits = std::numeric_limits<double>;
    const std::pair<double, double> rounded[] = {
        {0, 0}, {0.0004, 0}, {0.0005, 0.001}, {0.0025, 0.003}, {1.0005, 1.001}};
    for (const auto& [seconds, cleaned] : rounded)
        EXPECT_EQ(GazeIdle::clean(seconds), cleaned) << seconds;
    for (const double aDay : {86399.9996, 86400.0, 1e308, -1e-300, Limits::infinity(),
                              -Limits::infinity(), Limits::quiet_NaN()})
        EXPECT_EQ(GazeIdle::clean(aDay), 86400) << aDay;
    EXPECT_TRUE(std::signbit(GazeIdle::clean(-0.0)));

    const GazeIdle idle(0.5004, -1, true, false);
    EXPECT_EQ(encodeJson(idle), R"({"asleep":false,"key":0.5,"locked":true,"pointer":86400})");
}

TEST(PointerTarget, ReadsTwoIntegersWithinItsLimit) {
    using Words = std::vector<std::string>;
    const std::pair<Words, PointerTarget> accepted[] = {
        {{"100000", "-100000"}, {100000, -100000}},
        {{"+7", "-0"}, {7, 0}},
        {{"0000000000000000000000012", "0"}, {12, 0}},
    };
    for (const auto& [words, target] : accepted)
        EXPECT_EQ(PointerTarget::parse(words), target) << testing::PrintToString(words);

    for (const char* refused :
         {"100001", "-100001", "1.5", "1e3", "", "-", " 1", "1 ", "0x1", "1,000", "٣",
          "-9223372036854775808", "9223372036854775808", "18446744073709551616"}) {
        EXPECT_FALSE(PointerTarget::parse(Words{refused, "2"})) << refused;
        EXPECT_FALSE(PointerTarget::parse(Words{"2", refused})) << refused;
    }
    for (const Words& wrong : {Words{}, Words{"1"}, Words{"1", "2", "3"}, Words{"1", "2", ""}})
        EXPECT_FALSE(PointerTarget::parse(wrong)) << testing::PrintToString(wrong);
}

} // namespace
} // namespace velmo
