#include "core/input/HeldKeys.h"
#include "tests/Texts.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using enum HotkeyModifier;
using Modifiers = std::vector<HotkeyModifier>;

/// Returns the hot key as text: "cmd+shift+k", "shift+" for a modifier alone, "none" if it is
/// absent.
std::string spelt(const std::optional<Hotkey>& hotkey) {
    if (!hotkey)
        return "none";
    std::string text;
    for (const HotkeyModifier modifier : hotkey->modifiers)
        text.append(rawText(modifier)).append("+");
    return text + hotkey->key;
}

/// The keys by their codes, from 0 on; "_" stands for a code without a key.
const Strings keyboard = words(R"(
    a s d f h g z x c v _ b q w e r y t 1 2 3 4 6 5 = 9 7 - 8 0 ] o u [ i p enter l j ' k ; \
    , / n m . tab space ` backspace _ escape _ cmd shift _ alt ctrl _ _ _ fn
    f17 _ _ _ _ _ _ _ _ _ _ _ _ _ _ f18 f19 _ _ _ _ _ _ _ _ _ f20 _ _ _ _ _
    f5 f6 f7 f3 f8 f9 _ f11 _ f13 f16 f14 _ f10 _ f12 _
    f15 _ home pageup delete f4 end f2 pagedown f1 left right down up)");

TEST(Hotkey, EveryKeyHasTheCodeOfItsPlaceOnAUsKeyboard) {
    for (std::size_t code = 0; code < keyboard.size(); ++code) {
        const std::string& name = keyboard[code];
        if (const auto modifier = fromRawText<HotkeyModifier>(name)) {
            EXPECT_EQ(keyCode(*modifier), code) << name;
        } else if (name != "_") {
            EXPECT_EQ(Hotkey{.key = name}.ansiCode(), code) << name;
        }
    }
    EXPECT_EQ(Hotkey::keys.size(), 81U);
    EXPECT_EQ((Hotkey{.modifiers = {shift}, .game = true}.ansiCode()), std::nullopt);
}

TEST(Hotkey, OnlyKeysThatTypeNothingStandAlone) {
    for (const AnsiKey& key : Hotkey::keys) {
        const bool types = key.name.size() == 1;
        const bool alone = !types && key.name != "space";
        const std::string name(key.name);
        EXPECT_EQ(Hotkey::parse(Strings{name}, false).has_value(), alone) << name;
        EXPECT_EQ(Hotkey::parse(Strings{"shift", name}, false).has_value(), alone) << name;
        EXPECT_TRUE(Hotkey::parse(Strings{"fn", name}, false)) << name;
        EXPECT_TRUE(Hotkey::parse(Strings{"shift", "cmd", name}, false)) << name;
        EXPECT_EQ(Hotkey::parse(Strings{name}, true).value().typesCharacter(), types) << name;
    }
}

TEST(Hotkey, ReadsWhatThePhoneAsksFor) {
    struct Case {
        std::string json;
        std::string inGame;
        std::string outside = inGame; ///< of game mode
    };

    const Case cases[] = {
        {.json = R"(["CMD","Shift","K"])", .inGame = "cmd+shift+k"},
        {.json = R"(["shift","cmd","k"])", .inGame = "shift+cmd+k"},
        {.json = R"(["option","c"])", .inGame = "alt+c"},
        {.json = R"(["win","\u0063"])", .inGame = "cmd+c"},
        {.json = " [ \"escape\" ]\n", .inGame = "escape"},
        {.json = R"(["cmd","ctrl","alt","shift","\\"])", .inGame = "cmd+ctrl+alt+shift+\\"},
        {.json = R"(["W"])", .inGame = "w", .outside = "none"},
        {.json = R"(["Shift"])", .inGame = "shift+", .outside = "none"},
        {.json = R"(["option","win","ctrl"])", .inGame = "alt+cmd+ctrl+", .outside = "none"},
        {.json = R"(["escape")" + times(256 - 10, " ") + "]", .inGame = "escape"},
        {.json = R"(["escape")" + times(257 - 10, " ") + "]", .inGame = "none"},
    };
    for (const auto& [json, inGame, outside] : cases) {
        const auto plain = Hotkey::parseArguments(Strings{json});
        const auto game = Hotkey::parseArguments(Strings{json, "game"});
        EXPECT_EQ(spelt(plain), outside) << json;
        EXPECT_EQ(spelt(game), inGame) << json;
        EXPECT_FALSE(plain && plain->game);
        EXPECT_TRUE(!game || game->game);
        EXPECT_EQ(game && game->isModifierOnly(), inGame.ends_with('+')) << json;
    }
}

TEST(Hotkey, RefusesEverythingElse) {
    for (const bool game : {false, true}) {
        const auto parse = [&](const std::string& json) { return Hotkey::parseJson(json, game); };
        expectRefused(parse,
                      {"[]", "{\"cmd\":\"k\"}", "\"k\"", R"(["cmd","k"]x)", R"(["cmd","k",])"});
        expectRefused(parse, R"(["cmd",#])",
                      words(R"(["k"] null 4 "" "\u006B\u0020" "escape\u0000" "é")"));
        expectRefused(parse, "[#]", words(R"("cmd","win","c" "alt","option","c" "k","cmd" ""
            "f21" "f0" "cmd","ctrl","alt","shift","fn","k" "command","k" "fn" "shift","fn"
            "cmd","win" "cmd","shift","alt","ctrl","fn" "w","shift")"));
    }
    for (const Strings& flags : {Strings{"Game"}, Strings{""}, Strings{"game", "game"}})
        EXPECT_FALSE(Hotkey::parseArguments(joined({R"(["cmd","k"])"}, flags))) << flags[0];
    EXPECT_FALSE(Hotkey::parseArguments({}));
}

TEST(Hotkey, TheLayoutAddsModifiersButNotToABareGameKey) {
    const Modifiers extra = {shift, alt};
    EXPECT_EQ((Hotkey{.modifiers = {cmd, shift}, .key = "2"}.pressModifiers(extra)),
              (Modifiers{cmd, shift, shift, alt}));
    EXPECT_EQ((Hotkey{.key = "2"}.pressModifiers(extra)), extra);
    EXPECT_EQ((Hotkey{.key = "2", .game = true}.pressModifiers(extra)), Modifiers());
    EXPECT_EQ((Hotkey{.modifiers = {cmd}, .key = "2", .game = true}.pressModifiers(extra)),
              (Modifiers{cmd, shift, alt}));
}

using testing::ElementsAre;
using Press = HeldKeys::Press;

TEST(HeldKeys, TellsPressesApartByModifiersAndKey) {
    EXPECT_EQ(HeldKeys::id({.modifiers = {fn, shift, ctrl, alt, cmd}, .key = "x"}),
              "alt+cmd+ctrl+fn+shift+x");
    EXPECT_EQ(HeldKeys::id({.modifiers = {shift}, .game = true}), "shift+");
    EXPECT_EQ(HeldKeys::id({.key = "w", .game = true}), "w");
}

TEST(HeldKeys, GivesBackWhatWasPressedMostRecentFirst) {
    const Hotkey a{.modifiers = {cmd}, .key = "a"};
    const Hotkey b{.modifiers = {alt, cmd}, .key = "b"};
    const Press first{.modifiers = {cmd}, .code = 0};
    const Press second{.modifiers = {shift, cmd}, .code = 11};
    const Press third{.code = 8};
    const Press again{.modifiers = {alt, cmd}, .code = 1};
    HeldKeys held;
    EXPECT_FALSE(held.takeLast());
    held.pressed(a, first);
    held.pressed(b, second);
    held.pressed({.key = "c"}, third);
    held.pressed(a, again);
    EXPECT_THAT(held.modifiers(), ElementsAre(shift, cmd, alt));

    EXPECT_EQ(held.take({.modifiers = {cmd, alt}, .key = "b", .game = true}), second);
    EXPECT_FALSE(held.take(b));
    EXPECT_THAT(held.takeAll(), ElementsAre(again, third));
    EXPECT_TRUE(held.isEmpty());
}

} // namespace
} // namespace velmo
