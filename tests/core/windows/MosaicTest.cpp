#include "core/support/Ascii.h"
#include "core/windows/MosaicEvent.h"
#include "core/windows/MosaicHotkey.h"
#include "tests/Texts.h"

#include <gtest/gtest.h>

#include <bit>

namespace velmo {
namespace {

TEST(MosaicHotkey, TakesTwoModifiersOrMore) {
    const std::pair<const char*, unsigned> all[] = {
        {"Cmd+", 256}, {"shift+", 512}, {"ALT+", 2048}, {"ctrl+", 4096}};
    for (unsigned chosen = 0; chosen < 16; ++chosen) {
        MosaicHotkey hotkey{.id = "grid", .keyCode = 5};
        Strings line{"grid="};
        for (unsigned i = 0; i < 4; ++i) {
            line.emplace_back((chosen >> i & 1U) != 0 ? all[i].first : "");
            hotkey.modifiers += (chosen >> i & 1U) != 0 ? all[i].second : 0;
        }
        const auto read =
            MosaicHotkey::parse(line[0] + line[1] + line[2] + line[3] + line[4] + "G");
        EXPECT_EQ(read, std::popcount(chosen) < 2 ? std::nullopt : std::optional(hotkey)) << chosen;
    }
}

TEST(MosaicHotkey, OffersLettersDigitsAndAFewOtherKeys) {
    const Strings others = words("tab space left right down up");
    for (const AnsiKey& key : Hotkey::ansiKeyCodes) {
        const std::string name(key.name);
        const bool isOffered = (name.size() == 1 && Ascii::isLetterOrDigit(name[0]))
                               || std::ranges::count(others, name) == 1;
        const auto hotkey = MosaicHotkey::parse("side=ctrl+alt+" + name);
        EXPECT_TRUE(isOffered ? hotkey && hotkey->keyCode == key.code : !hotkey) << name;
    }
    EXPECT_EQ(MosaicHotkey::parse("frontApp=+cmd++shift+return+"),
              (MosaicHotkey{.id = "frontApp", .keyCode = 36, .modifiers = 768}));
}

TEST(MosaicHotkey, RefusesOtherLinesAndSkipsThem) {
    expectRefused(MosaicHotkey::parse, {"", "grid", "=ctrl+alt+g", "tile=ctrl+alt+g",
                                        "Grid=ctrl+alt+g", "grid =ctrl+alt+g"});
    expectRefused(MosaicHotkey::parse, "grid=#",
                  {"", "+", "cmd+cmd+g", "cmd+cmd+alt+g", "ctrl+alt", "g+ctrl+alt", "ctrl=alt+g",
                   " ctrl+alt+g", "ctrl+alt+g ", "ctrl+alt+g=x", "ctrl+fn+g", "ctrl+alt+g\xFF"});
    const Strings lines{"up=ctrl+alt+u", "# off", "grid=cmd+g", "up=ctrl+alt+w"};
    EXPECT_EQ(MosaicHotkey::parseAll(lines),
              (std::vector{*MosaicHotkey::parse(lines[0]), *MosaicHotkey::parse(lines[3])}));
}

TEST(MosaicEvent, LeavesOutWhatIsAbsent) {
    EXPECT_EQ(encodeJson(MosaicEvent{.type = "a", .id = "grid"}), R"({"id":"grid","type":"a"})");
    EXPECT_EQ(encodeJson(MosaicEvent{.type = "a", .on = false}), R"({"on":false,"type":"a"})");
}

} // namespace
} // namespace velmo
