#include "core/terminal/DetachKey.h"

#include "tests/Texts.h"

namespace velmo {
namespace {

using PtyAttach::DetachKey;

TEST(DetachKey, FollowsWhatIsTypedAndWhen) {
    // Words are typed ("]" is the escape), "tick", or milliseconds that pass. A result is what is
    // forwarded, with "!" if the user detached, or "-" for nothing.
    const struct {
        const char* steps;
        const char* results;
    } histories[] = {
        {.steps = "plain ]]d ]x d tick", .results = "plain ]d ]x d -"},
        {.steps = "a]db d ]D", .results = "a! d !"},
        {.steps = "]]]d ] 999 d", .results = "]! - !"},
        {.steps = "] 999 tick 1 tick 5000 tick d", .results = "- - ] - d"},
        {.steps = "] 1000 d ] 1000 ] d", .results = "- ]d - ] !"},
    };

    for (const auto& [steps, results] : histories) {
        DetachKey key;
        std::int64_t now = -500;
        Strings all;
        for (std::string step : words(steps)) {
            if (step.front() >= '0' && step.front() <= '9') {
                now += std::stoll(step);
                continue;
            }
            std::ranges::replace(step, ']', '\x1D');
            const auto result = step == "tick" ? DetachKey::Result{.forward = key.tick(now)}
                                               : key.feed(bytesOf(step), now);
            std::string told(textOf(result.forward));
            std::ranges::replace(told, '\x1D', ']');
            told += result.detach ? "!" : "";
            all.push_back(told.empty() ? "-" : told);
        }
        EXPECT_EQ(all, words(results)) << steps;
    }
}

TEST(DetachKey, OnlyDDetachesAndNoOtherByteIsLost) {
    for (int value = 0; value < 256; ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        const bool detaches = byte == 'd' || byte == 'D';
        const Bytes sent = byte == 29 ? Bytes{29} : Bytes{29, byte};
        EXPECT_EQ(DetachKey().feed(Bytes{29, byte}, 0),
                  (DetachKey::Result{detaches ? Bytes() : sent, detaches}));
    }
}

} // namespace
} // namespace velmo
