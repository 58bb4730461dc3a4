#include "core/support/Ascii.h"
#include "core/windows/MosaicEvent.h"
#include "core/windows/MosaicHotkey.h"
#include "tests/Texts.h"

#include <gtest/gtest.h>

namespace velmo {
namespace {

TEST(MosaicHotkey, OffersLettersDigitsAndAFewOtherKeys) {
    const Strings otherKeys = words("tab space left right down up");
    for (const AnsiKey& key : Hotkey::ansiKeyCodes) {
        const std::string name(key.name);
        const bool isOffered = (name.size() == 1 && Ascii::isLetterOrDigit(name[0]))
                               || std::ranges::count(otherKeys, name) == 1;
        const auto hotkey = MosaicHotkey::parse("side=ctrl+alt+" + name);
        EXPECT_TRUE(isOffered ? hotkey && hotkey->keyCode == key.code : !hotkey) << name;
    }
}

TEST(MosaicHotkey, ReadsTwoModifiersOrMoreAndAKey) {
    EXPECT_EQ(MosaicHotkey::parse("grid=ctrl+alt+g"),
              (MosaicHotkey{.id = "grid", .keyCode = 5, .modifiers = 6144}));
    EXPECT_EQ(MosaicHotkey::parse("pause=CMD+Shift+ALT+0"),
              (MosaicHotkey{.id = "pause", .keyCode = 29, .modifiers = 2816}));
    EXPECT_EQ(MosaicHotkey::parse("frontApp=+cmd++alt+return+"),
              (MosaicHotkey{.id = "frontApp", .keyCode = 36, .modifiers = 2304}));
}

TEST(MosaicHotkey, RefusesOtherLinesAndSkipsThem) {
    expectRefused(MosaicHotkey::parse, {"", "grid", "=ctrl+alt+g", "tile=ctrl+alt+g",
                                        "Grid=ctrl+alt+g", "grid =ctrl+alt+g"});
    expectRefused(MosaicHotkey::parse, "grid=#",
                  {"", "+", "g", "cmd+g", "cmd+cmd+g", "cmd+cmd+alt+g", "ctrl+alt", "g+ctrl+alt",
                   "ctrl=alt+g", " ctrl+alt+g", "ctrl+alt+g ", "ctrl+alt+g=x", "ctrl+fn+g",
                   "ctrl+alt+g\xFF"});
    const Strings lines{"up=ctrl+alt+u", "# off", "grid=cmd+g", "up=ctrl+alt+w"};
    EXPECT_EQ(MosaicHotkey::parseAll(lines),
              (std::vector{*MosaicHotkey::parse(lines[0]), *MosaicHotkey::parse(lines[3])}));
}

TEST(MosaicEvent, IsWrittenForThePhone) {
    EXPECT_EQ(encodeJson(MosaicEvent::ofAction("grid")), R"({"id":"grid","type":"action"})");
    EXPECT_EQ(encodeJson(MosaicEvent::ofPause(false)), R"({"on":false,"type":"pause"})");
}

} // namespace
} // namespace velmo
