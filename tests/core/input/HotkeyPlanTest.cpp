#include "core/input/HotkeyPlan.h"

#include "core/input/EventFlags.h"
#include "core/input/InputDaemonWire.h"
#include "core/input/MessageKey.h"
#include "tests/Texts.h"

#include <map>
#include <set>

namespace velmo {
namespace {

using enum HotkeyModifier;
using HotkeyPlan::Chord;
using Modifiers = std::vector<HotkeyModifier>;

/// Returns the steps as text: " +21:cs" is key 21 going down while cmd and shift are down, which
/// are named by their first letters.
std::string spelt(const std::vector<KeyPhase::Step>& steps) {
    std::string text;
    for (const KeyPhase::Step& step : steps) {
        text += (step.down ? " +" : " -") + std::to_string(step.code) + ":";
        for (const HotkeyModifier modifier : step.held)
            text += rawText(modifier)[0];
    }
    return text;
}

TEST(KeyPhase, ATapIsAPressAndItsRelease) {
    const auto expect = [](const Modifiers& modifiers, std::optional<std::uint16_t> key,
                           const Modifiers& others, const std::string& down,
                           const std::string& up) {
        EXPECT_EQ(spelt(KeyPhase::steps(KeyPhase::down, modifiers, key, others)), down);
        EXPECT_EQ(spelt(KeyPhase::steps(KeyPhase::up, modifiers, key, others)), up);
        EXPECT_EQ(spelt(KeyPhase::steps(KeyPhase::tap, modifiers, key, others)), down + up);
    };
    expect({cmd, shift}, 21, {}, " +55:c +56:cs +21:cs", " -21:cs -56:c -55:");
    expect({fn, alt, cmd}, 8, {shift, alt}, " +63:saf +55:safc +8:safc", " -8:safc -55:saf -63:sa");
    expect({shift}, {}, {}, " +56:s", " -56:");
    expect({cmd}, {}, {cmd}, "", "");
    // A modifier that is listed twice goes down twice and is up after its first release.
    expect({shift, shift}, 7, {}, " +56:s +56:ss +7:ss", " -7:ss -56: -56:");
}

/// The text that each key gives in the states none, shift, option, both.
using FewKeys = std::map<std::uint16_t, std::array<std::string, 4>>;

std::optional<std::string> given(const FewKeys& keys, std::uint16_t code, LayoutState state) {
    const auto key = keys.find(code);
    if (key == keys.end())
        return std::nullopt;
    return key->second.at(static_cast<std::size_t>(state.rawValue));
}

/// Translates keys of a French keyboard. 81 and 84 are on the numeric keypad, which has the only
/// key for "=".
std::optional<std::string> french(std::uint16_t code, LayoutState state, bool /*command*/) {
    static const FewKeys keys{
        {0, {"q", "Q"}},  {6, {"w", "W"}},  {8, {"c", "C"}},  {9, {"v", "V"}},
        {12, {"a", "A"}}, {13, {"z", "Z"}}, {19, {"é", "2"}}, {23, {"(", "5", "{", "["}},
        {81, {"=", "="}}, {84, {"2", "2"}}};
    return given(keys, code, state);
}

/// Translates keys of a US keyboard.
std::optional<std::string> american(std::uint16_t code, LayoutState state, bool /*command*/) {
    static const FewKeys keys{{0, {"a", "A"}}, {13, {"w", "W"}}, {19, {"2", "@"}}};
    return given(keys, code, state);
}

Hotkey game(const std::string& key, Modifiers modifiers = {}) {
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
        {game("w", {shift}), {{shift}, 13}},
        {game("w", {shift, cmd}), {{shift, cmd}, 13}},
        {game("", {shift}), {{shift}, std::nullopt}},
    };
    for (const auto& [hotkey, chord] : cases)
        EXPECT_EQ(HotkeyPlan::chord(hotkey, french), chord) << hotkey.key << hotkey.game;
}

/// The characters that the typing keys give, in the order of those of `us`: a blank for a character
/// that is not ASCII. While Command is down, all layouts give the characters of a US keyboard.
struct ScriptLayout {
    std::string_view name;
    std::string_view plain;
    std::string_view shifted;

    std::optional<std::string> operator()(std::uint16_t code, LayoutState state,
                                          bool command) const;
};

constexpr ScriptLayout us{.name = "US",
                          .plain = "`1234567890-=qwertyuiop[]\\asdfghjkl;'zxcvbnm,./",
                          .shifted = "~!@#$%^&*()_+QWERTYUIOP{}|ASDFGHJKL:\"ZXCVBNM<>?"};

std::optional<std::string> ScriptLayout::operator()(std::uint16_t code, LayoutState state,
                                                    bool command) const {
    const auto key = std::ranges::find(Hotkey::keys, code, &AnsiKey::code);
    if (key == Hotkey::keys.end() || key->name.size() != 1 || state.contains(LayoutState::option))
        return std::nullopt;
    const ScriptLayout& table = command ? us : *this;
    const std::string_view level = state.rawValue == 0 ? table.plain : table.shifted;
    return std::string(1, level.at(us.plain.find(key->name)));
}

constexpr ScriptLayout scriptLayouts[] = {
    {.name = "Greek",
     .plain = "`1234567890-=;         []\\          '       ,./",
     .shifted = "~!@#$%^&*()_+:         {}|          \"       <>?"},
    {.name = "Hebrew",
     .plain = ";1234567890-=/'        ][\\          ,         .",
     .shifted = "~!@#$%^&*)(_+QWERTYUIOP}{|ASDFGHJKL:\"ZXCVBNM><?"},
    {.name = "Russian",
     .plain = "]1234567890-=                                 /",
     .shifted = "[!\" %:,.;()_+                                 ?"},
    {.name = "Dvorak - QWERTY",
     .plain = "`1234567890[]',.pyfgcrl/=\\aoeuidhtns-;qjkxbmwvz",
     .shifted = "~!@#$%^&*(){}\"<>PYFGCRL?+|AOEUIDHTNS_:QJKXBMWVZ"},
};

TEST(HotkeyPlan, FindsAHotKeyWithCmdWhereTheLayoutHasItWithCommand) {
    for (const ScriptLayout& layout : scriptLayouts) {
        ASSERT_TRUE(layout.plain.size() == 47 && layout.shifted.size() == 47) << layout.name;
        for (const AnsiKey& key : Hotkey::keys) {
            const Hotkey hotkey{.modifiers = {cmd}, .key = std::string(key.name)};
            EXPECT_EQ(HotkeyPlan::chord(hotkey, layout), (Chord{{cmd}, key.code}))
                << layout.name << ", cmd+" << key.name;
        }
    }
    const std::tuple<std::size_t, std::string, Chord> withoutCommand[] = {
        {0, ";", {{ctrl}, 12}},
        {1, "'", {{ctrl}, 13}},
        {2, "[", {{ctrl, shift}, 50}},
        {3, "-", {{ctrl}, 39}},
    };
    for (const auto& [layout, key, chord] : withoutCommand)
        EXPECT_EQ(HotkeyPlan::chord({.modifiers = {ctrl}, .key = key}, scriptLayouts[layout]),
                  chord)
            << key;
}

/// A keyboard, French at first, on which requests are carried out.
struct Desk {
    HotkeyPlan::Translate layout = french;
    HeldKeys held;
    std::set<std::uint16_t> keysDown;

    std::string run(KeyPhase::Phase phase, const Hotkey& hotkey) {
        return post(HotkeyPlan::steps(phase, hotkey, layout, held));
    }

    void down(const Hotkey& hotkey) { run(KeyPhase::down, hotkey); }

    std::string releaseAll(const std::string& names) {
        const auto keys = InputDaemonWire::releaseKeys(Strings{"release-all", names});
        return post(HotkeyPlan::releases(keys.value(), held));
    }

    std::string post(const std::vector<KeyPhase::Step>& steps) {
        for (const KeyPhase::Step& step : steps) {
            keysDown.erase(step.code);
            if (step.down)
                keysDown.insert(step.code);
        }
        return spelt(steps);
    }
};

TEST(HotkeyPlan, ReleaseAllLetsGoOfTheNamedKeysWhateverTheirModifiers) {
    Desk desk;
    desk.down(game("w", {shift}));
    EXPECT_EQ(desk.releaseAll(R"(["w"])"), " -13:s -56:");
    EXPECT_EQ(desk.run(KeyPhase::tap, game("w")), " +13: -13:");
    EXPECT_TRUE(desk.held.isEmpty());

    desk.down(game("w"));
    desk.down(game("w", {shift}));
    desk.down({.modifiers = {cmd}, .key = "a"});
    EXPECT_EQ(desk.releaseAll(R"(["x"])"), "");
    EXPECT_EQ(desk.releaseAll(R"(["W","x"])"), " -13:cs -56:c -13:c");
    EXPECT_EQ(desk.releaseAll("[]"), " -12:c -55:");

    // A modifier that another press put down stays.
    desk.down(game("", {shift}));
    desk.down(game("w", {shift}));
    EXPECT_EQ(desk.run(KeyPhase::tap, {.key = "tab"}), " +48:s -48:s");
    EXPECT_EQ(desk.releaseAll(R"(["w"])"), " -13:s");
    EXPECT_EQ(desk.releaseAll(R"(["nothing known"])"), " -56:");
}

TEST(HotkeyPlan, LetsGoOfTheKeysOfAnotherLayoutBeforeItPressesAgain) {
    const Hotkey selectAll{.modifiers = {cmd}, .key = "a"};
    const Hotkey second{.modifiers = {cmd}, .key = "2"};
    Desk desk;
    EXPECT_EQ(desk.run(KeyPhase::down, selectAll), " +55:c +12:c");
    EXPECT_EQ(desk.run(KeyPhase::down, selectAll), " +55:c +12:c"); // as a keyboard repeats it
    EXPECT_EQ(desk.run(KeyPhase::down, second), " +56:cs +19:cs");
    desk.layout = american;
    EXPECT_EQ(desk.run(KeyPhase::down, selectAll), " -12:sc -55:s +55:sc +0:sc");
    EXPECT_EQ(desk.run(KeyPhase::down, second),
              " -19:cs -56:c +19:c"); // the same key without shift
    EXPECT_EQ(desk.releaseAll("[]"), " -19:c -0:c -55:");
}

/// Makes `more` requests and changes of the layout in every order, and expects that "release-all"
/// leaves no key down after any of them.
void expectNothingLeftDown(const Desk& desk, int more) {
    Desk lost = desk;
    lost.releaseAll("[]");
    ASSERT_TRUE(lost.keysDown.empty() && lost.held.isEmpty());
    if (more == 0)
        return;
    Desk elsewhere = desk;
    elsewhere.layout = american;
    expectNothingLeftDown(elsewhere, more - 1);
    const Hotkey requests[] = {{.modifiers = {cmd}, .key = "2"},
                               {.modifiers = {shift, cmd}, .key = "a"},
                               game("", {shift}),
                               game("w")};
    for (const Hotkey& hotkey : requests) {
        for (const auto phase : {KeyPhase::down, KeyPhase::up}) {
            Desk next = desk;
            next.run(phase, hotkey);
            expectNothingLeftDown(next, more - 1);
        }
    }
}

TEST(HotkeyPlan, NoOrderOfRequestsLeavesAKeyDown) {
    expectNothingLeftDown(Desk(), 5);
}

TEST(EventFlags, MatchTheFlagsOfARealKeyboard) {
    const std::pair<KeyPhase::Step, std::uint64_t> cases[] = {
        {{.code = 12, .held = {cmd, ctrl, alt, shift}}, 0x1E0000},
        {{.code = 12, .held = {fn, shift}}, 0x820000},
        {{.code = 123, .held = {ctrl}}, 0xA40000},
        {{.code = 103, .held = {cmd}}, 0x900000}, // F11
        {{.code = 117}, 0x800000},                // delete
        {{.code = 51}, 0},                        // backspace
        {{.code = 81, .held = {cmd}}, 0x300000},  // "=" of the keypad
    };
    for (const auto& [step, flags] : cases)
        EXPECT_EQ(EventFlags::of(step), flags) << step.code;

    // The keypad lies among function keys.
    const std::set<int> keypad{65, 67, 69, 71, 75, 76, 78, 81, 82, 83,
                               84, 85, 86, 87, 88, 89, 91, 92, 95};
    for (std::uint16_t code = 0; code < 123; ++code)
        EXPECT_EQ((EventFlags::of(KeyPhase::Step{.code = code}) & EventFlags::numericPad) != 0,
                  keypad.contains(code))
            << code;
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
