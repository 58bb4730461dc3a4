#include "core/output/Output.h"
#include "core/windows/ClickCounter.h"
#include "core/windows/FocusTracker.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmo {
namespace {

const FocusSnapshot field{.identity = "field", .editable = true, .password = false, .pid = 9};

/// In every one of these one thing differs.
const FocusSnapshot others[] = {{"Field", true, false, 9},
                                {"field", false, false, 9},
                                {"field", true, true, 9},
                                {"field", true, false, 10}};

FocusTracker tracking(const FocusSnapshot& snapshot) {
    FocusTracker tracker;
    tracker.observe(snapshot);
    return tracker;
}

TEST(FocusTracker, NumbersEveryChangeAndTellsOfItOnce) {
    FocusTracker tracker;
    const FocusEvent first{"1", true, false};
    EXPECT_EQ(tracker.observe(field), first);
    EXPECT_EQ(tracker.observe(field), std::nullopt);
    tracker.requested = true;
    EXPECT_EQ(tracker.observe(field), first);
    int revision = 1;
    for (const FocusSnapshot& other : others) {
        for (const FocusSnapshot& next : {other, field}) {
            tracker.requested = true; // what is owed is paid by the event of a change
            EXPECT_EQ(tracker.observe(next),
                      (FocusEvent{std::to_string(++revision), next.editable, next.password}));
            EXPECT_EQ(tracker.observe(next), std::nullopt);
        }
    }
    EXPECT_EQ(Output::jsonLine(first),
              R"({"editable":true,"password":false,"target":"1","type":"focus"})");
}

TEST(FocusTracker, AcceptsTheCurrentNumberWhileTheFocusStays) {
    EXPECT_FALSE(FocusTracker().accepts("0", field));
    EXPECT_TRUE(tracking(field).accepts("1", field));
    for (const char* target : {"", "0", "01", "+1", "1 ", "2"})
        EXPECT_FALSE(tracking(field).accepts(target, field)) << target;
    for (const FocusSnapshot& other : others) {
        FocusTracker tracker = tracking(field);
        EXPECT_FALSE(tracker.accepts("1", other));
        tracker.observe(other);
        EXPECT_FALSE(tracker.accepts("1", other));
        EXPECT_TRUE(tracker.accepts("2", other)); // a password field too
    }
}

TEST(FocusTracker, AcceptsFromTheCacheWhatIsRecentAndNoPassword) {
    FocusTracker tracker = tracking(field);
    const auto accepts = [&](double age, std::string_view target = "1", std::int32_t pid = 9,
                             std::string_view identity = "field") {
        return tracker.acceptsCached(target, pid, identity, age, 0.5);
    };
    EXPECT_TRUE(accepts(0) && accepts(0.5));
    EXPECT_FALSE(accepts(-0.1) || accepts(0.51) || accepts(std::nan("")));
    EXPECT_FALSE(accepts(0, "2") || accepts(0, "01") || accepts(0, "1", 10));
    EXPECT_FALSE(accepts(0, "1", 9, "other"));
    tracker.cacheable = false;
    EXPECT_FALSE(accepts(0));
    tracker = tracking(others[2]); // a password field
    EXPECT_FALSE(accepts(0));
    tracker = tracking({"field", true, false, 0});
    EXPECT_FALSE(accepts(0, "1", 0));
    tracker = {.cacheable = true};
    EXPECT_FALSE(accepts(0, "0"));
}

TEST(ClickCounter, CountsPressesThatFollowCloselyInTimeAndPlace) {
    ClickCounter counter{.interval = 0.5, .slop = 4};
    EXPECT_EQ(counter.press(false, {0, 0}, 10), 1);
    EXPECT_EQ(counter.press(false, {0, 0}, 10.25), 2);
    EXPECT_EQ(counter.press(false, {4, -4}, 10.75), 3); // both limits exactly
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
