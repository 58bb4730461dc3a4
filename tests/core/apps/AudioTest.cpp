#include "core/apps/AudioOutputs.h"
#include "core/apps/AudioState.h"
#include "core/output/Output.h"
#include "tests/Texts.h"

#include <cmath>

namespace velmo {
namespace {

using namespace AudioOutputs;

TEST(AudioOutputs, PacksACodeOfUpToFourBytesAndNamesItsTransport) {
    EXPECT_EQ(fourCC("bltn"), 0x626C746EU);
    EXPECT_EQ(fourCC("ab"), 0x6162U);
    const std::pair<std::string_view, std::string_view> names[] = {
        {"bltn", "built-in"}, {"blue", "bluetooth"},   {"blea", "bluetooth"},   {"airp", "airplay"},
        {"usb ", "usb"},      {"hdmi", "hdmi"},        {"dprt", "displayport"}, {"virt", "virtual"},
        {"grup", "virtual"},  {"thun", "thunderbolt"}, {"aggr", "virtual"},     {"usb", "other"},
        {"", "other"},        {"BLTN", "other"}};
    for (const auto& [code, name] : names)
        EXPECT_EQ(transport(fourCC(code)), name) << code;
}

TEST(AudioOutputs, AnIdentifierIsPrintableAsciiAndIsNeverTakenForAnOption) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const bool printable = byte >= 0x20 && byte <= 0x7E;
        EXPECT_EQ(isValidID("x" + text), printable) << byte;
        EXPECT_EQ(isValidID(text), printable && text != " " && text != "-") << byte;
    }
    expectVerdicts(isValidID, {times(200, "x")}, {"", times(201, "x")});
    EXPECT_EQ(parseSetArgs(Strings{"a b "}), "a b ");
    EXPECT_FALSE(parseSetArgs({}) || parseSetArgs(words("-x")) || parseSetArgs(words("a a")));
}

/// Orders by length alone, unlike any other order, so that the test sees which order was used.
std::weak_ordering shorterFirst(std::string_view a, std::string_view b) {
    return a.size() <=> b.size();
}

constexpr std::uint32_t usb = fourCC("usb ");

const RawAudioDevice devices[] = {
    {.deviceID = 1, .uid = " abc \n", .name = "Long", .transportType = usb, .outputChannels = 2},
    {.deviceID = 2, .uid = "abc", .name = "Same again", .outputChannels = 2},
    {.deviceID = 3, .uid = "hidden", .name = "x", .outputChannels = 2, .hidden = true},
    {.deviceID = 4, .uid = "input", .name = "x", .outputChannels = 0},
    {.deviceID = 5, .uid = std::nullopt, .name = "x", .outputChannels = 2},
    {.deviceID = 6, .uid = "-x", .name = "x", .outputChannels = 2},
    {.deviceID = 7, .uid = "blank", .name = std::nullopt, .outputChannels = 2},
    {.deviceID = 9, .uid = "hidden", .name = "bb", .outputChannels = 1},
    {.deviceID = 10, .uid = "blank", .name = " BB ", .outputChannels = 1},
    {.deviceID = 11, .uid = "default", .name = "The very longest", .outputChannels = 1},
};

TEST(AudioOutputs, ListsEachOutputOnceWithTheDefaultFirst) {
    const auto ids = [](std::optional<std::uint32_t> defaultID) {
        std::string text;
        for (const AudioOutput& output : list(devices, defaultID, shorterFirst))
            text += output.id + " ";
        return text;
    };
    EXPECT_EQ(ids(std::nullopt), "hidden blank abc default ");
    EXPECT_EQ(ids(11), "default hidden blank abc ");
    EXPECT_EQ(Output::jsonLine(list(std::span(devices).first(1), 1, shorterFirst)),
              R"([{"id":"abc","isDefault":true,"name":"Long","transport":"usb"}])");
}

TEST(AudioOutputs, SwitchesToTheFirstVisibleOutputOfThatIdentifier) {
    EXPECT_EQ(target("hidden", devices), devices[7]);
    EXPECT_EQ(target("abc", devices), devices[0]);
    EXPECT_EQ(target("-x", devices), devices[5]);
    for (const std::string_view uid : {"input", "abc ", "ABC", "", "nothing"})
        EXPECT_FALSE(target(uid, devices)) << uid;
}

TEST(AudioState, RoundsAScalarInSinglePrecision) {
    const std::pair<float, int> cases[] = {{0.125F, 13}, {0.145F, 15}, {0.285F, 29}, {0.005F, 1},
                                           {0.004F, 0},  {-3e38F, 0},  {3e38F, 100}};
    for (const auto& [scalar, volume] : cases)
        EXPECT_EQ(AudioState::fromScalar(scalar, true)->volume, volume) << scalar;
    for (const float scalar : {NAN, HUGE_VALF, -HUGE_VALF})
        EXPECT_FALSE(AudioState::fromScalar(scalar, false)) << scalar;
}

TEST(AudioState, ClampsTheVolumeAndCountsAsAudibleUnlessToldOtherwise) {
    EXPECT_EQ(AudioState::fromAppleScript(101, {}), (AudioState{.volume = 100, .muted = false}));
    EXPECT_EQ(AudioState::fromAppleScript(-1, true), (AudioState{.volume = 0, .muted = true}));
    EXPECT_FALSE(AudioState::fromAppleScript(std::nullopt, true));
    EXPECT_EQ(Output::jsonLine(AudioState{.volume = 35, .output = "Speakers"}),
              R"({"muted":false,"output":"Speakers","volume":35})");
}

} // namespace
} // namespace velmo
