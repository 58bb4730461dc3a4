#include "core/output/Output.h"
#include "core/windows/ClickCounter.h"
#include "core/windows/FocusTracker.h"
#include "tests/Texts.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmo {
namespace {

const FocusSnapshot input{.identity = "field", .editable = true, .pid = 9};
const FocusSnapshot secret{.identity = "field", .editable = true, .password = true, .pid = 9};

/// Each differs from the input in one member.
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
        for (const FocusSnapshot& next : {other, input}) {
            FocusEvent event{.editable = next.editable, .password = next.password};
            event.target = std::to_string(tracker.revision + 1);
            tracker.requested = true; // the event of the change serves the request too
            EXPECT_EQ(tracker.observe(next), event);
            EXPECT_EQ(tracker.observe(next), std::nullopt);
        }
    }
    EXPECT_EQ(Output::jsonLine(first),
              R"({"editable":true,"password":false,"target":"1","type":"focus"})");
}

TEST(FocusTracker, AcceptsTheCurrentNumberWhileTheFocusStays) {
    EXPECT_FALSE(FocusTracker().accepts("0", input));
    expectVerdicts([](const auto& target) { return tracking(input).accepts(target, input); }, {"1"},
                   {"", "0", "01", "+1", "1 ", "2"});
    for (const FocusSnapshot& other : others) {
        FocusTracker tracker = tracking(input);
        EXPECT_FALSE(tracker.accepts("1", other));
        tracker.observe(other);
        EXPECT_FALSE(tracker.accepts("1", other));
        EXPECT_TRUE(tracker.accepts("2", other)); // even in a password field
    }
}

TEST(FocusTracker, AcceptsFromTheCacheWhatIsRecentAndNoPassword) {
    struct Request {
        FocusSnapshot current = input;
        bool cacheable = true;
        std::string target = "1";
        std::int32_t pid = 9;
        std::string identity = "field";
        double age = 0;
    };

    const auto accepts = [](const Request& request) {
        FocusTracker tracker = tracking(request.current);
        tracker.cacheable = request.cacheable;
        return tracker.acceptsCached(request.target, request.pid, request.identity, request.age, 1);
    };
    EXPECT_TRUE(accepts({}) && accepts({.age = 1}));
    const Request refused[] = {{.age = -0.1},
                               {.age = 1.01},
                               {.age = std::nan("")},
                               {.target = "01"},
                               {.pid = 10},
                               {.identity = "other"},
                               {.cacheable = false},
                               {.current = secret},
                               {.current = {.identity = "field", .pid = 0}, .pid = 0}};
    for (const Request& request : refused)
        EXPECT_FALSE(accepts(request)) << "row " << &request - refused;
    EXPECT_FALSE(FocusTracker{.cacheable = true}.acceptsCached("0", 0, "", 0, 1));
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
