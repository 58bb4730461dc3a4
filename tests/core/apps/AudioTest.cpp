#include "core/apps/AudioOutputs.h"
#include "core/apps/AudioState.h"
#include "core/output/Output.h"

#include <gtest/gtest.h>

#include <limits>

namespace velmo {
namespace {

using namespace AudioOutputs;
using namespace std::string_literals;
using Arguments = std::vector<std::string>;

TEST(AudioOutputs, PacksFourBytesAndNamesTheTransport) {
    EXPECT_EQ(fourCC("bltn"), 0x626C746EU);
    EXPECT_EQ(fourCC("ab"), 0x6162U);
    EXPECT_EQ(fourCC(""), 0U);
    EXPECT_EQ(fourCC("abc\u00E9"), 0x616263C3U);
    const std::pair<std::string_view, std::string_view> names[] = {
        {"bltn", "built-in"}, {"blue", "bluetooth"},   {"blea", "bluetooth"},   {"airp", "airplay"},
        {"usb ", "usb"},      {"hdmi", "hdmi"},        {"dprt", "displayport"}, {"virt", "virtual"},
        {"grup", "virtual"},  {"thun", "thunderbolt"}, {"aggr", "virtual"},     {"usb", "other"},
        {"", "other"},        {"BLTN", "other"},
    };
    for (const auto& [code, name] : names)
        EXPECT_EQ(transport(fourCC(code)), name) << code;
}

TEST(AudioOutputs, AnIdentifierIsNeverTakenForAnOption) {
    for (const std::string& id : {"a b "s, "~-!"s, std::string(200, 'x')})
        EXPECT_EQ(parseSetArgs(Arguments{id}), id);
    for (const std::string& id :
         {""s, "-x"s, " x"s, std::string(201, 'x'), "caf\u00E9"s, "a\x7F"s, "a\n"s, "a\0"s})
        EXPECT_FALSE(parseSetArgs(Arguments{id})) << id;
    EXPECT_FALSE(parseSetArgs({}) || parseSetArgs(Arguments{"a", "a"}));
}

/// By length, then by small letters alone: an order that no other one passes for.
std::weak_ordering shorterFirst(std::string_view a, std::string_view b) {
    return a.size() <=> b.size();
}

TEST(AudioOutputs, ListsVisibleOutputsOnceTheDefaultFirst) {
    const RawAudioDevice devices[] = {
        {1, " abc \n", "Long name", fourCC("usb "), 2, false},
        {2, "abc", "Same again", 0, 2, false},
        {3, "hidden", "x", 0, 2, true},
        {4, "input", "x", 0, 0, false},
        {5, std::nullopt, "x", 0, 2, false},
        {6, "-x", "x", 0, 2, false},
        {7, "nameless", std::nullopt, 0, 2, false},
        {8, "blank", " \u3000\t", 0, 2, false},
        {9, "hidden", "bb", 0, 1, false},
        {10, "blank", " BB ", fourCC("hdmi"), 1, false},
        {11, std::string(200, 'u') + " ", "c", 0, 1, false},
        {12, "default", "The very longest", 0, 1, false},
    };
    const AudioOutput longUid{std::string(200, 'u'), "c", "other", false};
    const AudioOutput hidden{"hidden", "bb", "other", false};
    const AudioOutput blank{"blank", "BB", "hdmi", false};
    const AudioOutput abc{"abc", "Long name", "usb", false};
    AudioOutput last{"default", "The very longest", "other", false};
    EXPECT_EQ(list(devices, std::nullopt, shorterFirst),
              (std::vector{longUid, hidden, blank, abc, last}));
    EXPECT_EQ(list(devices, 99, shorterFirst).front(), longUid);
    last.isDefault = true;
    EXPECT_EQ(list(devices, 12, shorterFirst), (std::vector{last, longUid, hidden, blank, abc}));
    EXPECT_EQ(
        Output::jsonLine(std::vector{last}),
        R"([{"id":"default","isDefault":true,"name":"The very longest","transport":"other"}])");

    EXPECT_EQ(target("hidden", devices), devices[8]);
    EXPECT_EQ(target("abc", devices), devices[0]);
    EXPECT_EQ(target("nameless", devices), devices[6]);
    EXPECT_EQ(target("-x", devices), devices[5]);
    for (const std::string_view uid : {"input", "abc ", "ABC", "", "nothing"})
        EXPECT_FALSE(target(uid, devices)) << uid;
}

TEST(AudioState, RoundsAScalarInSinglePrecision) {
    const std::pair<float, int> cases[] = {
        {0.0F, 0},    {1.0F, 100},   {0.125F, 13}, {0.005F, 1},  {0.004F, 0},
        {1.7F, 100},  {-0.2F, 0},    {0.145F, 15}, {0.285F, 29}, {0.575F, 58},
        {0.265F, 26}, {0.995F, 100}, {-0.0F, 0},   {3e38F, 100}, {-3e38F, 0},
    };
    for (const auto& [scalar, volume] : cases)
        EXPECT_EQ(AudioState::fromScalar(scalar, true), (AudioState{volume, true, {}})) << scalar;
    for (const float scalar :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
          -std::numeric_limits<float>::infinity()})
        EXPECT_FALSE(AudioState::fromScalar(scalar, false));
}

TEST(AudioState, ClampsAndLeavesOutWhatItLacks) {
    EXPECT_EQ(AudioState::fromAppleScript(130, std::nullopt), (AudioState{100, false, {}}));
    EXPECT_EQ(AudioState::fromAppleScript(INT64_MIN, true), (AudioState{0, true, {}}));
    EXPECT_FALSE(AudioState::fromAppleScript(std::nullopt, true));
    AudioState state = AudioState::fromVolume(101, false);
    EXPECT_EQ(Output::jsonLine(state), R"({"muted":false,"volume":100})");
    state.output = "Speakers";
    EXPECT_EQ(Output::jsonLine(state), R"({"muted":false,"output":"Speakers","volume":100})");
}

} // namespace
} // namespace velmo
