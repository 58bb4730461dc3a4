#include "core/input/Hotkey.h"

#include "tests/Texts.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using enum HotkeyModifier;
using testing::ElementsAre;
using Modifiers = std::vector<HotkeyModifier>;

/// Key codes in the order of the keyboard, which is not that of the table.
TEST(Hotkey, EveryKeyHasTheCodeOfItsPlaceOnAUsKeyboard) {
    const std::pair<std::uint16_t, const char*> runs[] = {
        {0, "a s d f h g z x c v"},
        {11, "b q w e r y t"},
        {18, "1 2 3 4 6 5 = 9 7 - 8 0 ]"},
        {31, "o u [ i p enter l j ' k ; \\"},
        {43, ", / n m . tab space ` backspace"},
        {53, "escape"},
        {64, "f17"},
        {79, "f18 f19"},
        {90, "f20"},
        {96, "f5 f6 f7 f3 f8 f9"},
        {103, "f11"},
        {105, "f13 f16 f14"},
        {109, "f10"},
        {111, "f12"},
        {113, "f15"},
        {115, "home pageup delete f4 end f2 pagedown f1 left right down up"}};
    std::size_t known = 0;
    for (const auto& [first, names] : runs) {
        std::uint16_t code = first;
        for (const std::string& name : words(names)) {
            const AnsiKey* key = findKey(Hotkey::ansiKeyCodes, name);
            ASSERT_NE(key, nullptr) << name;
            EXPECT_EQ(key->code, code) << name;
            ++code;
            ++known;
        }
    }
    EXPECT_EQ(known, Hotkey::keys.size());
    const std::pair<HotkeyModifier, int> modifiers[] = {
        {cmd, 55}, {ctrl, 59}, {alt, 58}, {shift, 56}, {fn, 63}};
    for (const auto& [modifier, code] : modifiers)
        EXPECT_EQ(keyCode(modifier), code) << rawText(modifier);
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
    const std::pair<std::string, Hotkey> cases[] = {
        {R"(["cmd","shift","4"])", {{cmd, shift}, "4"}},
        {R"(["CMD","Shift","K"])", {{cmd, shift}, "k"}},
        {R"(["shift","cmd","k"])", {{shift, cmd}, "k"}},
        {R"(["option","c"])", {{alt}, "c"}},
        {R"(["win","\u0063"])", {{cmd}, "c"}},
        {" [ \"escape\" ]\n", {{}, "escape"}},
        {R"(["shift","tab"])", {{shift}, "tab"}},
        {R"(["fn","f1"])", {{fn}, "f1"}},
        {R"(["fn","shift","space"])", {{fn, shift}, "space"}},
        {R"(["cmd","ctrl","alt","shift","\\"])", {{cmd, ctrl, alt, shift}, "\\"}},
        {R"(["W"])", {{}, "w", true}},
        {R"(["fn","w"])", {{fn}, "w", true}},
        {R"(["Shift"])", {{shift}, "", true}},
        {R"(["option","win","ctrl","shift"])", {{alt, cmd, ctrl, shift}, "", true}},
        {"[\"escape\"" + times(246, " ") + "]", {{}, "escape"}}, // 256 bytes
    };
    for (const auto& [json, hotkey] : cases) {
        const Strings arguments = hotkey.game ? Strings{json, "game"} : Strings{json};
        EXPECT_EQ(Hotkey::parseArguments(arguments), hotkey) << json;
        EXPECT_EQ(hotkey.isModifierOnly(), hotkey.key.empty());
    }
}

TEST(Hotkey, RefusesEverythingElse) {
    const auto parse = [](const std::string& json) {
        return Hotkey::parseArguments(Strings{json});
    };
    expectRefused(parse, {"[]", "{\"cmd\":\"k\"}", "\"k\"", R"(["cmd","k"]x)", R"(["cmd","k",])",
                          "[\"escape\"" + times(247, " ") + "]"}); // 257 bytes
    expectRefused(
        parse, R"(["cmd",#])",
        {R"(["k"])", "null", "4", "\"\xFF\"", "\"\"", "\"k \"", R"("escape\u0000")", "\"é\""});
    expectRefused(parse, "[#]",
                  words(R"("a" "shift","a" "cmd","win","c" "alt","option","c" "k","cmd"
        "cmd" "" "f21" "f0" "cmd","ctrl","alt","shift","fn","k" "command","k")"));
    expectRefused(
        [](const std::string& json) { return Hotkey::parseArguments(Strings{json, "game"}); },
        "[#]",
        joined({""}, words(R"("" "fn" "shift","fn" "cmd","win" "cmd","shift","alt","ctrl","fn"
                              "w","shift")")));
    for (const Strings& flags : {Strings{"Game"}, Strings{""}, Strings{"game", "game"}})
        EXPECT_FALSE(Hotkey::parseArguments(joined({R"(["cmd","k"])"}, flags))) << flags[0];
    EXPECT_FALSE(Hotkey::parseArguments({}));
}

TEST(Hotkey, TheLayoutAddsModifiersButNotToABareGameKey) {
    const Modifiers extra = {shift, alt};
    EXPECT_THAT((Hotkey{{cmd, shift}, "2"}.pressModifiers(extra)),
                ElementsAre(cmd, shift, shift, alt));
    EXPECT_THAT((Hotkey{{}, "2"}.pressModifiers(extra)), ElementsAre(shift, alt));
    EXPECT_THAT((Hotkey{{}, "2", true}.pressModifiers(extra)), ElementsAre());
    EXPECT_THAT((Hotkey{{cmd}, "2", true}.pressModifiers(extra)), ElementsAre(cmd, shift, alt));
}

} // namespace
} // namespace velmo
