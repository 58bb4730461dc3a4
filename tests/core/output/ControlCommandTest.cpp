#include "core/output/ControlCommand.h"

#include "tests/Texts.h"

#include <map>

namespace velmo {
namespace {

using enum ControlCommand::Kind;

std::optional<ControlCommand> parse(const std::string& line) {
    return ControlCommand::parse(words(line));
}

TEST(ControlCommand, ReadsEveryWordAloneAndTwoWithAPercentage) {
    const std::pair<std::string, ControlCommand::Kind> alone[] = {
        {"volume-up", volumeUp},
        {"volume-down", volumeDown},
        {"mute-toggle", muteToggle},
        {"media-play-pause", mediaPlayPause},
        {"media-next", mediaNext},
        {"media-previous", mediaPrevious},
        {"media-stop", mediaStop},
        {"lock", lock},
        {"sleep", sleep},
        {"shutdown", shutdown},
        {"restart", restart}};
    for (const auto& [word, kind] : alone) {
        EXPECT_EQ(parse(word), ControlCommand{.kind = kind}) << word;
        EXPECT_FALSE(parse(word + " 50")) << word;
        EXPECT_FALSE(ControlCommand::parse(Strings{word, ""})) << word;
    }
    const std::pair<std::string, std::int64_t> percentages[] = {
        {"50", 50}, {"+50", 50}, {"-0", 0}, {"100", 100}, {times(30, "0") + "7", 7}};
    for (const auto& [text, percent] : percentages) {
        EXPECT_EQ(parse("volume-set " + text),
                  (ControlCommand{.kind = volumeSet, .percent = percent}));
        EXPECT_EQ(parse("brightness-set " + text),
                  (ControlCommand{.kind = brightnessSet, .percent = percent}));
    }
}

TEST(ControlCommand, RefusesEverythingElse) {
    expectRefused(parse,
                  {"", "Lock", "lock-screen", "volume-set", "volume-set 5 6", "50 volume-set"});
    expectRefused(parse, "volume-set #",
                  words("101 -1 50.5 + - +-5 --5 5e1 0x5 18446744073709551666"));
    const Strings refused[] = {
        {""}, {"lock "}, {"volume-set", ""}, {"volume-set", " 50"}, {"volume-set", "5", ""}};
    for (const Strings& arguments : refused)
        EXPECT_FALSE(ControlCommand::parse(arguments)) << testing::PrintToString(arguments);
}

TEST(ControlCommand, OnlySoundCommandsHaveAScript) {
    const std::string unmute =
        "try\nset volume output muted false\nend try\nset volume output volume ";
    const std::map<ControlCommand::Kind, std::string> scripts = {
        {volumeSet, unmute + "150"},
        {volumeUp, unmute + "((output volume of (get volume settings)) + 6)"},
        {volumeDown, unmute + "((output volume of (get volume settings)) - 6)"},
        {muteToggle, "set volume output muted (not (output muted of (get volume settings)))"}};
    for (const ControlCommand::Kind kind : allCases<ControlCommand::Kind>) {
        const ControlCommand command{.kind = kind, .percent = 150};
        const auto script = scripts.find(kind);
        EXPECT_EQ(command.volumeScript(),
                  script == scripts.end() ? std::nullopt : std::optional(script->second))
            << rawText(kind);
        EXPECT_EQ(command.unmutesFirst(), script != scripts.end() && kind != muteToggle)
            << rawText(kind);
    }
}

} // namespace
} // namespace velmo
