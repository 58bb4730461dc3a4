#include "core/input/HotkeyPlan.h"

#include "core/input/EventFlags.h"
#include "core/input/InputDaemonWire.h"
#include "core/input/MessageKey.h"
#include "tests/Texts.h"
#include "tests/core/input/Steps.h"

#include <map>
#include <set>

namespace velmo {
namespace {

using enum HotkeyModifier;
using HotkeyPlan::Chord;

/// Some keys of a French keyboard: what each gives in the states none, shift, option, both. 81 and
/// 84 are on the numeric keypad, and the only key for "=" is there.
std::optional<std::string> french(std::uint16_t code, LayoutState state) {
    static const std::map<std::uint16_t, std::array<std::string, 4>> keys{
        {0, {"q", "Q"}},  {6, {"w", "W"}},  {8, {"c", "C"}},  {9, {"v", "V"}},
        {12, {"a", "A"}}, {13, {"z", "Z"}}, {19, {"é", "2"}}, {23, {"(", "5", "{", "["}},
        {81, {"=", "="}}, {84, {"2", "2"}}};
    const auto key = keys.find(code);
    if (key == keys.end())
        return std::nullopt;
    return key->second.at(static_cast<std::size_t>(state.rawValue));
}

Hotkey game(const std::string& key, std::vector<HotkeyModifier> modifiers = {}) {
    return {.modifiers = std::move(modifiers), .key = key, .game = true};
}

TEST(HotkeyPlan, PressesTheKeyThatTheLayoutHasForTheCharacter) {
    const std::pair<Hotkey, Chord> cases[] = {
        {{.modifiers = {cmd}, .key = "a"}, {{cmd}, 12}},
        {{.modifiers = {cmd}, .key = "2"}, {{cmd, shift}, 19}}, // not on the keypad
        {{.modifiers = {shift, cmd}, .key = "2"}, {{shift, cmd}, 19}},
        {{.modifiers = {cmd}, .key = "["}, {{cmd, shift, alt}, 23}},
        {{.modifiers = {cmd}, .key = "="}, {{cmd}, 81}},
        {{.modifiers = {cmd}, .key = "`"}, {{cmd}, 50}}, // the layout has none
        {{.modifiers = {cmd}, .key = "space"}, {{cmd}, 49}},
        {{.key = "escape"}, {{}, 53}},
        {game("w"), {{}, 13}}, // its place
        {game("2"), {{}, 19}},
        {game("w", {shift}), {{shift}, 6}},
        {game("", {shift}), {{shift}, std::nullopt}},
    };
    for (const auto& [hotkey, chord] : cases)
        EXPECT_EQ(HotkeyPlan::chord(hotkey, french), chord) << hotkey.key << hotkey.game;
}

/// A French keyboard, and an owner who carries requests out.
class Desk {
public:
    std::string run(KeyPhase::Phase phase, const Hotkey& hotkey) {
        return post(HotkeyPlan::steps(phase, hotkey, french, held_));
    }

    std::string releaseAll(const Strings& argv) {
        return post(HotkeyPlan::releases(InputDaemonWire::releaseKeys(argv).value(), held_));
    }

    void down(const Hotkey& hotkey) { run(KeyPhase::down, hotkey); }

    void up(const Hotkey& hotkey) { run(KeyPhase::up, hotkey); }

    void tap(const Hotkey& hotkey) { run(KeyPhase::tap, hotkey); }

    std::multiset<std::uint16_t> keysDown;

private:
    std::string post(const std::vector<KeyPhase::Step>& steps) {
        for (const KeyPhase::Step& step : steps) {
            keysDown.erase(step.code);
            if (step.down)
                keysDown.insert(step.code);
        }
        return speltSteps(steps);
    }

    HeldKeys held_;
};

TEST(HotkeyPlan, ReleaseAllLetsGoOfTheNamedKeysWhateverTheirModifiers) {
    Desk desk;
    desk.down(game("w", {shift}));
    EXPECT_EQ(desk.releaseAll({"release-all", R"(["w"])"}), " -6:s -56:");

    desk.down(game("w"));
    desk.down(game("w", {shift}));
    desk.down({.modifiers = {cmd}, .key = "a"});
    EXPECT_EQ(desk.releaseAll({"release-all", R"(["x"])"}), "");
    EXPECT_EQ(desk.releaseAll({"release-all", R"(["W","x"])"}), " -6:cs -56:c -13:c");
    EXPECT_EQ(desk.releaseAll({"release-all"}), " -12:c -55:");

    // A modifier that another press put down stays.
    desk.down(game("", {shift}));
    desk.down(game("w", {shift}));
    desk.tap({.key = "tab"});
    EXPECT_EQ(desk.releaseAll({"release-all", R"(["w"])"}), " -6:s");
    EXPECT_EQ(desk.releaseAll({"release-all", R"(["nothing known"])"}), " -56:");
    EXPECT_TRUE(desk.keysDown.empty());
}

const Hotkey copy{.modifiers = {cmd}, .key = "c"};
const Hotkey paste{.modifiers = {shift, cmd}, .key = "v"};
const Hotkey run = game("", {shift});
const Hotkey walk = game("w");

/// Makes requests in every order, `more` of them.
void expectNothingLeftDown(const Desk& desk, int more) {
    Desk lost = desk;
    lost.releaseAll({"release-all"});
    ASSERT_TRUE(lost.keysDown.empty());
    if (more == 0)
        return;
    for (const Hotkey& hotkey : {copy, paste, run, walk}) {
        for (const auto request : {&Desk::down, &Desk::up}) {
            Desk next = desk;
            (next.*request)(hotkey);
            expectNothingLeftDown(next, more - 1);
        }
    }
}

TEST(HotkeyPlan, NoOrderOfRequestsLeavesAKeyDown) {
    expectNothingLeftDown(Desk(), 5);
}

TEST(EventFlags, AreThoseOfAKeyboard) {
    const std::pair<KeyPhase::Step, std::uint64_t> cases[] = {
        {{.code = 12, .held = {cmd, ctrl, alt, shift}}, 0x1E0000},
        {{.code = 12, .held = {fn, shift}}, 0x820000},
        {{.code = 123, .held = {ctrl}}, 0xA40000},
        {{.code = 126}, 0xA00000},
        {{.code = 103, .held = {cmd}}, 0x900000}, // F11
        {{.code = 117}, 0x800000},                // delete
        {{.code = 51}, 0},                        // backspace
    };
    for (const auto& [step, flags] : cases)
        EXPECT_EQ(EventFlags::of(step), flags) << step.code;
}

TEST(MessageKey, IsAHotKeyOfTheSameKey) {
    const Strings keys = words("backspace delete enter tab escape left right up down home end");
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const std::string name(InputMessage::keys.at(i));
        EXPECT_EQ(hotkeyOf({.name = name, .target = "1"}), Hotkey{.key = keys[i]}) << name;
    }
    EXPECT_EQ(hotkeyOf({.name = "left", .target = "1"}), std::nullopt);
}

} // namespace
} // namespace velmo
