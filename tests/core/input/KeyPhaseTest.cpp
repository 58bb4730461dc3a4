#include "core/input/KeyPhase.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using enum HotkeyModifier;
using KeyPhase::Step;
using Modifiers = std::vector<HotkeyModifier>;

TEST(KeyPhase, PlansTheEventsOfEachPhase) {
    struct Case {
        KeyPhase::Phase phase;
        Modifiers modifiers;
        std::optional<std::uint16_t> key;
        Modifiers alreadyHeld;
        std::vector<Step> steps;
    };

    const Case cases[] = {
        {KeyPhase::tap,
         {cmd, shift},
         21,
         {},
         {{55, true, {cmd}},
          {56, true, {cmd, shift}},
          {21, true, {cmd, shift}},
          {21, false, {cmd, shift}},
          {56, false, {cmd}},
          {55, false, {}}}},
        {KeyPhase::down, {ctrl}, 0, {}, {{59, true, {ctrl}}, {0, true, {ctrl}}}},
        {KeyPhase::up, {ctrl}, 0, {}, {{0, false, {ctrl}}, {59, false, {}}}},
        {KeyPhase::up, {cmd}, 21, {cmd}, {{21, false, {cmd}}}},
        {KeyPhase::down,
         {fn, alt, cmd},
         8,
         {shift, alt},
         {{63, true, {shift, alt, fn}},
          {55, true, {shift, alt, fn, cmd}},
          {8, true, {shift, alt, fn, cmd}}}},
        {KeyPhase::up,
         {fn, alt, cmd},
         8,
         {shift, alt},
         {{8, false, {shift, alt, fn, cmd}},
          {55, false, {shift, alt, fn}},
          {63, false, {shift, alt}}}},
        {KeyPhase::tap, {shift}, {}, {}, {{56, true, {shift}}, {56, false, {}}}},
        {KeyPhase::tap, {}, {}, {cmd}, {}},
        // A modifier that was asked for twice: held twice, and let go of at once.
        {KeyPhase::tap,
         {shift, shift},
         7,
         {},
         {{56, true, {shift}},
          {56, true, {shift, shift}},
          {7, true, {shift, shift}},
          {7, false, {shift, shift}},
          {56, false, {}},
          {56, false, {}}}},
    };
    int row = 0;
    for (const Case& c : cases) {
        EXPECT_EQ(KeyPhase::steps(c.phase, c.modifiers, c.key, c.alreadyHeld), c.steps)
            << "row " << row;
        ++row;
    }
}

} // namespace
} // namespace velmo
