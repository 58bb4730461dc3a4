#include "core/input/KeyPhase.h"

#include "tests/Texts.h"

namespace velmo {
namespace {

using enum HotkeyModifier;
using Modifiers = std::vector<HotkeyModifier>;

/// "+21:cs" is key 21 going down while cmd and shift are held, by their first letters.
std::string spelt(const std::vector<KeyPhase::Step>& steps) {
    std::string text;
    for (const KeyPhase::Step& step : steps) {
        text += (text.empty() ? "" : " ") + std::string(step.down ? "+" : "-")
                + std::to_string(step.code) + ":";
        for (const HotkeyModifier modifier : step.held)
            text += rawText(modifier)[0];
    }
    return text;
}

TEST(KeyPhase, PlansTheEventsOfEachPhase) {
    struct Case {
        KeyPhase::Phase phase;
        Modifiers modifiers;
        std::optional<std::uint16_t> key;
        Modifiers alreadyHeld;
        std::string steps;
    };

    const Case cases[] = {
        {KeyPhase::tap, {cmd, shift}, 21, {}, "+55:c +56:cs +21:cs -21:cs -56:c -55:"},
        {KeyPhase::down, {ctrl}, 0, {}, "+59:c +0:c"},
        {KeyPhase::up, {ctrl}, 0, {}, "-0:c -59:"},
        {KeyPhase::up, {cmd}, 21, {cmd}, "-21:c"},
        {KeyPhase::down, {fn, alt, cmd}, 8, {shift, alt}, "+63:saf +55:safc +8:safc"},
        {KeyPhase::up, {fn, alt, cmd}, 8, {shift, alt}, "-8:safc -55:saf -63:sa"},
        {KeyPhase::tap, {shift}, {}, {}, "+56:s -56:"},
        {KeyPhase::tap, {}, {}, {cmd}, ""},
        // A modifier that was asked for twice: held twice, and let go of at once.
        {KeyPhase::tap, {shift, shift}, 7, {}, "+56:s +56:ss +7:ss -7:ss -56: -56:"},
    };
    for (const auto& [phase, modifiers, key, alreadyHeld, steps] : cases)
        EXPECT_EQ(spelt(KeyPhase::steps(phase, modifiers, key, alreadyHeld)), steps);
}

} // namespace
} // namespace velmo
