#include "core/windows/ClickCounter.h"
#include "core/windows/FocusTracker.h"
#include "tests/Texts.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmo {
namespace {

const FocusSnapshot input{.identity = "field", .editable = true, .pid = 9};
const FocusSnapshot secret{.identity = "field", .editable = true, .password = true, .pid = 9};

/// Snapshots that differ from `input` in one member each.
const FocusSnapshot others[] = {secret,
                                {.identity = "Field", .editable = true, .pid = 9},
                                {.identity = "field", .editable = false, .pid = 9},
                                {.identity = "field", .editable = true, .pid = 10}};

FocusTracker tracking(const FocusSnapshot& snapshot) {
    FocusTracker tracker;
    tracker.observe(snapshot);
    return tracker;
}

TEST(FocusTracker, NumbersEveryChangeAndTellsOfItOnce) {
    FocusTracker tracker;
    const FocusEvent first{.target = "1", .editable = true};
    EXPECT_EQ(tracker.observe(input), first);
    EXPECT_EQ(tracker.observe(input), std::nullopt);
    tracker.requested = true;
    EXPECT_EQ(tracker.observe(input), first);
    for (const FocusSnapshot& other : others) {
        FocusTracker changing = tracking(input);
        changing.requested = true; // the event of the change serves the request too
        EXPECT_EQ(
            changing.observe(other),
            (FocusEvent{.target = "2", .editable = other.editable, .password = other.password}));
        EXPECT_EQ(changing.observe(other), std::nullopt);
    }
    EXPECT_EQ(encodeJson(first),
              R"({"editable":true,"password":false,"target":"1","type":"focus"})");
}

TEST(FocusTracker, AcceptsTheCurrentNumberWhileTheFocusStays) {
    EXPECT_FALSE(FocusTracker().accepts("0", input));
    expectVerdicts([](const auto& target) { return tracking(input).accepts(target, input); }, {"1"},
                   {"", "0", "01", "+1", "1 ", "2"});
    for (const FocusSnapshot& other : others) {
        EXPECT_FALSE(tracking(input).accepts("1", other));
        EXPECT_TRUE(tracking(other).accepts("1", other)); // even in a password field
    }
}

TEST(FocusTracker, AcceptsARecentCachedFocusUnlessItIsAPassword) {
    FocusTracker tracker = tracking(input);
    const auto accepts = [&](double age, std::string_view target = "1", std::int32_t pid = 9,
                             std::string_view identity = "field") {
        return tracker.acceptsCached(target, pid, identity, age, 0.5);
    };
    EXPECT_TRUE(accepts(0) && accepts(0.5));
    EXPECT_FALSE(accepts(-0.1) || accepts(0.51) || accepts(std::nan("")));
    EXPECT_FALSE(accepts(0, "01") || accepts(0, "1", 10) || accepts(0, "1", 9, "other"));
    tracker.cacheable = false;
    EXPECT_FALSE(accepts(0));
    tracker = tracking(secret);
    EXPECT_FALSE(accepts(0));
    tracker = tracking({.identity = "field", .pid = 0});
    EXPECT_FALSE(accepts(0, "1", 0));
    tracker = {.cacheable = true};
    EXPECT_FALSE(accepts(0, "0"));
}

TEST(ClickCounter, CountsPressesThatFollowCloselyInTimeAndPlace) {
    ClickCounter counter{.interval = 0.5, .slop = 4};
    EXPECT_EQ(counter.press(false, {0, 0}, 10), 1);
    EXPECT_EQ(counter.press(false, {0, 0}, 10.25), 2);
    EXPECT_EQ(counter.press(false, {4, -4}, 10.75), 3); // at both limits
    EXPECT_EQ(counter.press(false, {8, -8}, 11), 4);    // measured from the last press
    EXPECT_EQ(counter.press(true, {8, -8}, 11), 1);
    EXPECT_EQ(counter.press(true, {8, -8}, 11.75), 1);
    EXPECT_EQ(counter.press(true, {12.5, -8}, 12), 1);
    EXPECT_EQ(counter.press(true, {12.5, -12.5}, 12), 1);
    EXPECT_EQ(counter.press(true, {12.5, -12.5}, 3), 2); // the clock ran backwards
    EXPECT_EQ(counter.press(true, {std::nan(""), 0}, 3), 1);
}

} // namespace
} // namespace velmo
