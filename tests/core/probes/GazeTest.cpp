#include "core/probes/GazeIdle.h"
#include "core/probes/PointerTarget.h"
#include "tests/Texts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

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
    const auto parse = [](const std::string& x, const std::string& y) {
        return PointerTarget::parse(Strings{x, y});
    };
    EXPECT_EQ(parse("100000", "-100000"), (PointerTarget{.x = 100000, .y = -100000}));
    EXPECT_EQ(parse("+7", "-0"), (PointerTarget{.x = 7, .y = 0}));
    const Strings refused = {"100001", "-100001", "1.5", "1e3", "", "-", " 1", "1 ", "٣"};
    expectRefused([&](const std::string& text) { return parse(text, "2"); }, refused);
    expectRefused([&](const std::string& text) { return parse("2", text); }, refused);
    for (const Strings& wrong : {Strings{}, {"1"}, {"1", "2", "3"}})
        EXPECT_FALSE(PointerTarget::parse(wrong)) << testing::PrintToString(wrong);
}

} // namespace
} // namespace velmo
