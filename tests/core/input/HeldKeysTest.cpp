#include "core/input/HeldKeys.h"

#include "core/input/KeyPhase.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <set>

namespace velmo {
namespace {

using enum HotkeyModifier;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Press = HeldKeys::Press;

TEST(HeldKeys, TellsPressesApartByModifiersAndKey) {
    EXPECT_EQ(HeldKeys::id({{shift, cmd}, "k"}), "cmd+shift+k");
    EXPECT_EQ(HeldKeys::id({{cmd, shift}, "k", true}), "cmd+shift+k");
    EXPECT_EQ(HeldKeys::id({{fn, shift, ctrl, alt, cmd}, "x"}), "alt+cmd+ctrl+fn+shift+x");
    EXPECT_EQ(HeldKeys::id({{shift}, "", true}), "shift+");
    EXPECT_EQ(HeldKeys::id({{}, "w", true}), "w");
}

TEST(HeldKeys, GivesBackWhatWasPressedMostRecentFirst) {
    const Hotkey a{{cmd}, "a"};
    const Hotkey b{{alt, cmd}, "b"};
    const Hotkey c{{}, "c", true};
    HeldKeys held;
    EXPECT_TRUE(held.isEmpty());
    EXPECT_FALSE(held.takeLast());
    held.pressed(a, {{cmd}, 0});
    held.pressed(b, {{shift, cmd}, 11});
    held.pressed(c, {{}, 8});
    held.pressed({{cmd}, "a", true}, {{alt}, 1});
    EXPECT_THAT(held.modifiers(), ElementsAre(shift, cmd, alt));

    EXPECT_FALSE(held.take({{}, "d", true}));
    EXPECT_EQ(held.take({{cmd, alt}, "b"}), (Press{{shift, cmd}, 11}));
    EXPECT_FALSE(held.take(b));
    EXPECT_FALSE(held.isEmpty());
    EXPECT_THAT(held.takeAll(), ElementsAre(Press{{alt}, 1}, Press{{}, 8}));
    EXPECT_TRUE(held.isEmpty());
    EXPECT_EQ(held, HeldKeys());
}

/// A keyboard and the way in which the input daemon uses the book.
class Session {
public:
    void down(const Hotkey& hotkey) {
        held_.take(hotkey);
        const auto others = held_.modifiers();
        const AnsiKey* key = findKey(Hotkey::ansiKeyCodes, hotkey.key);
        const auto code = key == nullptr ? std::nullopt : std::optional(key->code);
        post(KeyPhase::steps(KeyPhase::down, hotkey.modifiers, code, others));
        held_.pressed(hotkey, {KeyPhase::fresh(hotkey.modifiers, others), code});
    }

    void up(const Hotkey& hotkey) { release(held_.take(hotkey)); }

    void connectionLost() {
        while (!held_.isEmpty())
            release(held_.takeLast());
    }

    [[nodiscard]] bool keepsModifiersDown() const {
        return std::ranges::all_of(held_.modifiers(), [this](HotkeyModifier modifier) {
            return keysDown.contains(keyCode(modifier));
        });
    }

    std::set<std::uint16_t> keysDown;
    std::vector<std::uint16_t> releases;

private:
    void release(const std::optional<Press>& press) {
        if (press)
            post(KeyPhase::steps(KeyPhase::up, press->modifiers, press->code, held_.modifiers()));
    }

    void post(const std::vector<KeyPhase::Step>& steps) {
        for (const KeyPhase::Step& step : steps) {
            if (step.down) {
                keysDown.insert(step.code);
            } else {
                keysDown.erase(step.code);
                releases.push_back(step.code);
            }
        }
    }

    HeldKeys held_;
};

constexpr std::uint16_t cmdCode = 55, shiftCode = 56, cCode = 8, vCode = 9, wCode = 13;

TEST(HeldKeys, AWholeSessionLeavesNothingDown) {
    const Hotkey copy{{cmd}, "c"};
    const Hotkey paste{{shift, cmd}, "v"};
    const Hotkey walk{{}, "w", true};
    const Hotkey run{{shift}, "", true};
    Session session;

    session.down(copy);
    session.down(copy); // repeated: still its own cmd
    session.down(paste);
    EXPECT_THAT(session.keysDown, UnorderedElementsAre(cmdCode, cCode, shiftCode, vCode));
    session.up(copy); // overlapped: cmd was put down by this press
    EXPECT_THAT(session.keysDown, UnorderedElementsAre(shiftCode, vCode));
    session.up(copy);
    session.up(paste);
    EXPECT_THAT(session.keysDown, IsEmpty());

    session.releases.clear();
    session.down(walk);
    session.down(run);
    session.down(paste);
    session.down(walk);
    session.connectionLost();
    EXPECT_THAT(session.releases, ElementsAre(wCode, vCode, cmdCode, shiftCode));
    EXPECT_THAT(session.keysDown, IsEmpty());
}

RC_GTEST_PROP(HeldKeys, NoOrderOfRequestsLeavesAKeyDown, ()) {
    const std::vector<Hotkey> hotkeys = {
        {{cmd}, "c"},        {{cmd, shift}, "v"}, {{shift, cmd}, "v"}, {{alt, shift}, "", true},
        {{shift}, "", true}, {{}, "w", true},     {{fn, ctrl}, "up"}};
    const auto requests =
        *rc::gen::container<std::vector<std::pair<std::size_t, bool>>>(rc::gen::pair(
            rc::gen::inRange<std::size_t>(0, hotkeys.size()), rc::gen::arbitrary<bool>()));
    Session session;
    for (const auto& [index, isDown] : requests) {
        if (isDown)
            session.down(hotkeys[index]);
        else
            session.up(hotkeys[index]);
        RC_ASSERT(session.keepsModifiersDown());
    }
    session.connectionLost();
    RC_ASSERT(session.keysDown.empty());
}

} // namespace
} // namespace velmo
