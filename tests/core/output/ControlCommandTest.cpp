#include "core/output/ControlCommand.h"

#include <gtest/gtest.h>

#include <vector>

namespace velmo {
namespace {

using Kind = ControlCommand::Kind;
using Words = std::vector<std::string>;

TEST(ControlCommand, ReadsEveryWordAloneAndTwoWithAPercentage) {
    const std::pair<std::string, Kind> bare[] = {
        {"volume-up", Kind::volumeUp},
        {"volume-down", Kind::volumeDown},
        {"mute-toggle", Kind::muteToggle},
        {"media-play-pause", Kind::mediaPlayPause},
        {"media-next", Kind::mediaNext},
        {"media-previous", Kind::mediaPrevious},
        {"media-stop", Kind::mediaStop},
        {"lock", Kind::lock},
        {"sleep", Kind::sleep},
        {"shutdown", Kind::shutdown},
        {"restart", Kind::restart},
    };
    for (const auto& [word, kind] : bare) {
        EXPECT_EQ(ControlCommand::parse(Words{word}), ControlCommand{.kind = kind}) << word;
        EXPECT_FALSE(ControlCommand::parse(Words{word, ""})) << word;
        EXPECT_FALSE(ControlCommand::parse(Words{word, "50"})) << word;
    }

    const std::pair<std::string, std::int64_t> percentages[] = {{"50", 50},
                                                                {"+50", 50},
                                                                {"0", 0},
                                                                {"-0", 0},
                                                                {"-000", 0},
                                                                {"100", 100},
                                                                {std::string(30, '0') + "50", 50}};
    for (const auto& [text, percent] : percentages) {
        EXPECT_EQ(ControlCommand::parse(Words{"volume-set", text}),
                  (ControlCommand{.kind = Kind::volumeSet, .percent = percent}))
            << text;
        EXPECT_EQ(ControlCommand::parse(Words{"brightness-set", text}),
                  (ControlCommand{.kind = Kind::brightnessSet, .percent = percent}))
            << text;
    }
}

TEST(ControlCommand, RefusesEverythingElse) {
    const Words refused[] = {
        {},
        {""},
        {"Lock"},
        {"lock "},
        {"volume-set"},
        {"volume-set", "5", "6"},
        {"brightness-set", "5", ""},
        {"lock-screen"},
        {"50", "volume-set"},
    };
    for (const Words& words : refused)
        EXPECT_FALSE(ControlCommand::parse(words)) << testing::PrintToString(words);
    for (const char* text :
         {"101", "-1", "50.5", " 50", "50 ", "", "+", "-", "+-5", "--5", "++5", "5e1", "0x5",
          "18446744073709551616", "18446744073709551666", "9223372036854775808", "\xD9\xA5"})
        EXPECT_FALSE(ControlCommand::parse(Words{"volume-set", text})) << text;
    EXPECT_FALSE(ControlCommand::parse(Words{"volume-set", std::string("5\0", 2)}));
}

TEST(ControlCommand, OnlyVolumeCommandsHaveAScriptAndOnlyMuteStaysMuted) {
    const std::string unmute = "try\nset volume output muted false\nend try\n";
    for (const Kind kind : allCases<Kind>) {
        const auto script = ControlCommand{.kind = kind, .percent = 35}.volumeScript();
        EXPECT_EQ(script.has_value(), kind == Kind::volumeSet || kind == Kind::volumeUp
                                          || kind == Kind::volumeDown || kind == Kind::muteToggle)
            << rawText(kind);
        EXPECT_EQ(ControlCommand{kind}.unmutesFirst(), script && script->starts_with(unmute))
            << rawText(kind);
    }
    const std::pair<ControlCommand, std::string> scripts[] = {
        {{Kind::volumeSet, 35}, unmute + "set volume output volume 35"},
        {{Kind::volumeSet, 150}, unmute + "set volume output volume 150"},
        {{Kind::volumeSet, -5}, unmute + "set volume output volume -5"},
        {{Kind::volumeUp},
         unmute + "set volume output volume ((output volume of (get volume settings)) + 6)"},
        {{Kind::volumeDown},
         unmute + "set volume output volume ((output volume of (get volume settings)) - 6)"},
        {{Kind::muteToggle},
         "set volume output muted (not (output muted of (get volume settings)))"},
    };
    for (const auto& [command, script] : scripts)
        EXPECT_EQ(command.volumeScript(), script);
}

} // namespace
} // namespace velmo
