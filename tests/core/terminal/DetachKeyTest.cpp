#include "core/terminal/DetachKey.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace velmo {
namespace {

using PtyAttach::DetachKey;

/// "^" types the escape; time passes only where a number says so.
struct Step {
    std::string_view typed; ///< "tick" calls tick
    std::int64_t afterMs = 0;
    std::string_view forwarded;
    bool detach = false;
};

Bytes bytes(std::string_view text) {
    Bytes result;
    for (const char c : text)
        result.push_back(c == '^' ? DetachKey::escape : static_cast<std::uint8_t>(c));
    return result;
}

TEST(DetachKey, FollowsWhatIsTyped) {
    const std::vector<Step> histories[] = {
        {{"plain", 0, "plain"}},
        {{"a^db", 0, "a", true}, {"d", 0, "d"}},
        {{"^D", 0, "", true}, {"^", 0, ""}, {"d", 999, "", true}},
        {{"^^d", 0, "^d"}},
        {{"^^^d", 0, "^", true}},
        {{"^x", 0, "^x"}, {"d", 0, "d"}},
        {{"^", 0, ""}, {"tick", 999, ""}, {"tick", 1, "^"}, {"tick", 5000, ""}, {"d", 0, "d"}},
        {{"^", 0, ""}, {"d", 1000, "^d"}},
        {{"^", 0, ""}, {"^", 1000, "^"}, {"d", 0, "", true}},
        {{"^", 0, ""}, {"", 1000, "^"}, {"tick", 0, ""}},
        {{"tick", 0, ""}},
    };
    for (const auto& history : histories) {
        DetachKey key;
        std::int64_t now = -500;
        for (const Step& step : history) {
            now += step.afterMs;
            const auto result = step.typed == "tick" ? DetachKey::Result{key.tick(now)}
                                                     : key.feed(bytes(step.typed), now);
            EXPECT_EQ(result, (DetachKey::Result{bytes(step.forwarded), step.detach}))
                << step.typed << " in the history of " << history.front().typed;
        }
    }
}

} // namespace
} // namespace velmo
