#include "core/input/Hotkey.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <map>

namespace velmo {
namespace {

using enum HotkeyModifier;
using testing::ElementsAre;
using Words = std::vector<std::string>;
using Modifiers = std::vector<HotkeyModifier>;

/// Key codes in the order of the keyboard, which is not that of the table.
TEST(Hotkey, EveryKeyHasTheCodeOfItsPlaceOnAUsKeyboard) {
    const std::map<std::uint16_t, std::vector<std::string_view>> runs = {
        {0, {"a", "s", "d", "f", "h", "g", "z", "x", "c", "v"}},
        {11, {"b", "q", "w", "e", "r", "y", "t"}},
        {18, {"1", "2", "3", "4", "6", "5", "=", "9", "7", "-", "8", "0", "]"}},
        {31, {"o", "u", "[", "i", "p", "enter", "l", "j", "'", "k", ";", "\\"}},
        {43, {",", "/", "n", "m", ".", "tab", "space", "`", "backspace"}},
        {53, {"escape"}},
        {64, {"f17"}},
        {79, {"f18", "f19"}},
        {90, {"f20"}},
        {96, {"f5", "f6", "f7", "f3", "f8", "f9"}},
        {103, {"f11"}},
        {105, {"f13", "f16", "f14"}},
        {109, {"f10"}},
        {111, {"f12"}},
        {113, {"f15"}},
        {115,
         {"home", "pageup", "delete", "f4", "end", "f2", "pagedown", "f1", "left", "right", "down",
          "up"}},
    };
    std::size_t known = 0;
    for (const auto& [first, names] : runs) {
        std::uint16_t code = first;
        for (const std::string_view name : names) {
            const AnsiKey* key = findKey(Hotkey::ansiKeyCodes, name);
            ASSERT_NE(key, nullptr) << name;
            EXPECT_EQ(key->code, code) << name;
            ++code;
            ++known;
        }
    }
    EXPECT_EQ(known, 81U);
    EXPECT_EQ(Hotkey::keys.size(), 81U);
    EXPECT_EQ(keyCode(cmd), 55);
    EXPECT_EQ(keyCode(ctrl), 59);
    EXPECT_EQ(keyCode(alt), 58);
    EXPECT_EQ(keyCode(shift), 56);
    EXPECT_EQ(keyCode(fn), 63);
}

TEST(Hotkey, OnlyKeysThatTypeNothingStandAlone) {
    for (const AnsiKey& key : Hotkey::keys) {
        const bool types = key.name.size() == 1;
        const bool alone = !types && key.name != "space";
        const std::string name(key.name);
        EXPECT_EQ(Hotkey::parse(Words{name}, false).has_value(), alone) << name;
        EXPECT_EQ(Hotkey::parse(Words{"shift", name}, false).has_value(), alone) << name;
        EXPECT_TRUE(Hotkey::parse(Words{"fn", name}, false)) << name;
        EXPECT_TRUE(Hotkey::parse(Words{"shift", "cmd", name}, false)) << name;
        const auto bare = Hotkey::parse(Words{name}, true);
        ASSERT_TRUE(bare) << name;
        EXPECT_EQ(bare->typesCharacter(), types) << name;
    }
    EXPECT_THAT(std::vector(Hotkey::letters.begin(), Hotkey::letters.end()), testing::SizeIs(26));
    EXPECT_EQ(Hotkey::digits[9].name, "9");
    EXPECT_EQ(Hotkey::functionKeys[11].name, "f12");
}

TEST(Hotkey, ReadsWhatThePhoneAsksFor) {
    struct Case {
        Words arguments;
        Hotkey hotkey;
    };

    const Case cases[] = {
        {{R"(["cmd","shift","4"])"}, {{cmd, shift}, "4"}},
        {{R"(["CMD","Shift","K"])"}, {{cmd, shift}, "k"}},
        {{R"(["shift","cmd","k"])"}, {{shift, cmd}, "k"}},
        {{R"(["option","c"])"}, {{alt}, "c"}},
        {{R"(["win","\u0063"])"}, {{cmd}, "c"}},
        {{" [ \"escape\" ]\n"}, {{}, "escape"}},
        {{R"(["shift","tab"])"}, {{shift}, "tab"}},
        {{R"(["fn","f1"])"}, {{fn}, "f1"}},
        {{R"(["fn","shift","space"])"}, {{fn, shift}, "space"}},
        {{R"(["cmd","ctrl","alt","shift","\\"])"}, {{cmd, ctrl, alt, shift}, "\\"}},
        {{R"(["W"])", "game"}, {{}, "w", true}},
        {{R"(["fn","w"])", "game"}, {{fn}, "w", true}},
        {{R"(["Shift"])", "game"}, {{shift}, "", true}},
        {{R"(["option","win","ctrl","shift"])", "game"}, {{alt, cmd, ctrl, shift}, "", true}},
        {{"[\"escape\"" + std::string(246, ' ') + "]"}, {{}, "escape"}}, // 256 bytes
    };
    for (const auto& [arguments, hotkey] : cases) {
        EXPECT_EQ(Hotkey::parseArguments(arguments), hotkey) << testing::PrintToString(arguments);
        EXPECT_EQ(hotkey.isModifierOnly(), hotkey.key.empty());
    }
}

TEST(Hotkey, RefusesEverythingElse) {
    const Words cases[] = {
        {},
        {R"(["cmd","k"])", "Game"},
        {R"(["cmd","k"])", ""},
        {R"(["cmd","k"])", "game", "game"},
        {"[]"},
        {"[]", "game"},
        {"{\"cmd\":\"k\"}"},
        {"\"k\""},
        {R"(["cmd",["k"]])"},
        {R"(["cmd",null])"},
        {R"(["cmd",4])"},
        {R"(["cmd","k"]x)"},
        {R"(["cmd","k",])"},
        {"[\"cmd\",\"\xFF\"]"},
        {"[\"escape\"" + std::string(247, ' ') + "]"}, // 257 bytes
        {R"(["a"])"},
        {R"(["shift","a"])"},
        {R"(["cmd","win","c"])"},
        {R"(["alt","option","c"])"},
        {R"(["k","cmd"])"},
        {R"(["cmd"])"},
        {R"(["cmd",""])"},
        {R"([""])"},
        {R"([""])", "game"},
        {R"(["f21"])"},
        {R"(["f0"])"},
        {R"(["cmd","k "])"},
        {R"(["cmd","escape\u0000"])"},
        {R"(["cmd","ctrl","alt","shift","fn","k"])"},
        {R"(["command","k"])"},
        {R"(["cmd","é"])"},
        {R"(["fn"])", "game"},
        {R"(["shift","fn"])", "game"},
        {R"(["cmd","win"])", "game"},
        {R"(["cmd","shift","alt","ctrl","fn"])", "game"},
        {R"(["w","shift"])", "game"},
    };
    for (const Words& arguments : cases)
        EXPECT_FALSE(Hotkey::parseArguments(arguments)) << testing::PrintToString(arguments);
}

TEST(Hotkey, TheLayoutAddsModifiersButNotToABareGameKey) {
    const Modifiers extra = {shift, alt};
    EXPECT_THAT((Hotkey{{cmd, shift}, "2"}.pressModifiers(extra)),
                ElementsAre(cmd, shift, shift, alt));
    EXPECT_THAT((Hotkey{{}, "2"}.pressModifiers(extra)), ElementsAre(shift, alt));
    EXPECT_THAT((Hotkey{{}, "2", true}.pressModifiers(extra)), ElementsAre());
    EXPECT_THAT((Hotkey{{cmd}, "2", true}.pressModifiers(extra)), ElementsAre(cmd, shift, alt));
}

RC_GTEST_PROP(Hotkey, WhatIsAcceptedObeysItsLimits, (const std::string& bytes, bool game)) {
    Hotkey::parseJson(bytes, game);
    std::vector<std::string> names{"cmd", "WIN", "alt", "shift", "fn", "a", "tab", "space", bytes};
    const auto words = *rc::gen::resize(6, rc::gen::container<Words>(rc::gen::elementOf(names)));
    const auto hotkey = Hotkey::parse(words, game);
    if (!hotkey)
        return;
    auto sorted = hotkey->modifiers;
    std::ranges::sort(sorted);
    RC_ASSERT(std::ranges::adjacent_find(sorted) == sorted.end());
    RC_ASSERT(sorted.size() <= Hotkey::maxModifiers);
    RC_ASSERT(hotkey->game == game);
    RC_ASSERT((hotkey->isModifierOnly() ? game : hasKey(Hotkey::keys, hotkey->key)));
    Words written;
    for (const HotkeyModifier modifier : hotkey->modifiers)
        written.emplace_back(rawText(modifier));
    if (!hotkey->isModifierOnly())
        written.push_back(hotkey->key);
    RC_ASSERT(Hotkey::parse(written, game) == hotkey);
}

} // namespace
} // namespace velmo
