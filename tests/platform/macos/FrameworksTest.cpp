#include "lab/instruments/TemporaryFolder.h"
#include "platform/host/NameOrder.h"
#include "platform/host/PropertyList.h"
#include "platform/machine/macos/PowerRootDomain.h"
#include "platform/machine/macos/PowerSources.h"
#include "platform/xpc/SigningTeam.h"
#include "tests/platform/macos/FakeFrameworks.h"

#include <gtest/gtest.h>

#include <fstream>

namespace velmo {
namespace {

using namespace std::string_literals;
using fake::Array;
using fake::Dictionary;
using fake::Object;

constexpr const char* loneSurrogate = "\xED\xA0\x80";

class MacFrameworks : public testing::Test {
protected:
    void SetUp() override { fake::mac = &mac; }

    void TearDown() override { EXPECT_EQ(mac.owed(), 0) << "not released, or too often"; }

    Object* dictionary(Dictionary entries) { return mac.make(std::move(entries)); }

    fake::Mac mac;
};

TEST_F(MacFrameworks, SleepDisabledIsABooleanOrNothing) {
    const std::pair<Object*, std::optional<bool>> cases[] = {
        {mac.make(true), true}, {mac.make(false), false}, {mac.number(1), {}}, {nullptr, {}}};
    for (const auto& [property, expected] : cases) {
        mac.rootDomain = {{"SleepDisabled", property}};
        EXPECT_EQ(sleepDisabledInRootDomain(), expected);
    }
    mac.hasRootDomain = false;
    mac.rootDomain = {{"SleepDisabled", mac.make(true)}};
    EXPECT_EQ(sleepDisabledInRootDomain(), std::nullopt);
}

TEST_F(MacFrameworks, TheLidIsTwoPropertiesOrNothing) {
    Object* const no = mac.make(false);
    Object* const yes = mac.make(true);
    mac.rootDomain = {{"AppleClamshellState", yes}, {"AppleClamshellCausesSleep", no}};
    EXPECT_EQ(lidInRootDomain(), (LidState{.isShut = true, .causesSleep = false}));
    mac.rootDomain = {{"AppleClamshellState", yes}};
    EXPECT_EQ(lidInRootDomain(), std::nullopt);
    mac.rootDomain = {{"AppleClamshellCausesSleep", yes}};
    EXPECT_EQ(lidInRootDomain(), std::nullopt);
}

TEST_F(MacFrameworks, TellsWhetherTheSystemAcceptsASleepRequest) {
    EXPECT_TRUE(requestSystemSleep());
    mac.takesSleepRequests = false;
    EXPECT_FALSE(requestSystemSleep());
    mac.hasPowerManagement = false;
    EXPECT_FALSE(requestSystemSleep());
    EXPECT_EQ(mac.sleepRequests, 2);
}

TEST_F(MacFrameworks, PowerSourcesAreReadAsTheyAre) {
    EXPECT_TRUE(readPowerSources()->sources.empty());
    mac.providingType = mac.text("Battery Power");
    const auto source = [&](Object* type, Object* current, Object* max) {
        return dictionary({{"Type", type}, {"Current Capacity", current}, {"Max Capacity", max}});
    };
    Object* const goneMeanwhile = mac.make(fake::Other{});
    mac.powerSources =
        mac.make(Array{source(mac.text("UPS"), mac.number(80), mac.number(100)), goneMeanwhile,
                       source(mac.number(1), mac.make(12.5), mac.make(12.0))});
    const auto snapshot = readPowerSources();
    EXPECT_EQ(snapshot->providingType, "Battery Power");
    ASSERT_EQ(snapshot->sources.size(), 2U);
    EXPECT_EQ(snapshot->sources[0].type, "UPS");
    EXPECT_EQ(snapshot->sources[0].currentCapacity, 80);
    EXPECT_EQ(snapshot->sources[0].maximumCapacity, 100);
    EXPECT_EQ(snapshot->sources[1].type, std::nullopt);
    EXPECT_EQ(snapshot->sources[1].currentCapacity, std::nullopt);
    EXPECT_EQ(snapshot->sources[1].maximumCapacity, 12);
    mac.hasSnapshot = false;
    EXPECT_FALSE(readPowerSources());
}

TEST_F(MacFrameworks, TheTeamIsTextOrNothing) {
    const std::pair<Object*, std::optional<std::string>> cases[] = {
        {dictionary({{"teamid", mac.text("ABCDE12345")}}), "ABCDE12345"},
        {dictionary({{"teamid", mac.text("AB\0C"s)}}), "AB\0C"s}, // NUL hides nothing
        {dictionary({{"teamid", mac.text(""s + 'A' + loneSurrogate)}}), {}},
        {dictionary({{"teamid", mac.number(12345)}}), {}},
        {dictionary({}), {}}, // signed ad hoc
        {nullptr, {}},
    };
    for (const auto& [information, expected] : cases) {
        mac.signingInformation = information;
        EXPECT_EQ(currentSigningTeam(), expected);
    }
    mac.signingInformation = cases[0].first;
    for (mac.failingSigningStep = 1; mac.failingSigningStep <= 3; ++mac.failingSigningStep)
        EXPECT_EQ(currentSigningTeam(), std::nullopt) << mac.failingSigningStep;
}

TEST_F(MacFrameworks, APropertyListIsReadWithItsKinds) {
    Object* const list =
        mac.make(Array{mac.number(-1), mac.make(2.0), mac.make(0x1p64), mac.make(true),
                       mac.make(Bytes{0, 255}), mac.make(fake::Other{}), mac.text(loneSurrogate)});
    Object* const tree =
        dictionary({{"text", mac.text("\u00E9")}, {"list", list}, {loneSurrogate, mac.number(1)}});
    const Value expected = Value::Dictionary{
        {"text", "\u00E9"},
        {"list", Value::Array{-1, 2.0, 0x1p64, true, Bytes{0, 255}, Value(), Value()}}};
    Object* deepest = mac.make(Array{});
    for (int i = 0; i < 128; ++i)
        deepest = mac.make(Array{deepest});
    mac.propertyLists = {{"<tree", tree},
                         {"<deep", deepest},
                         {"<deeper", dictionary({{"a", deepest}})},
                         {"{ a = b; }", tree}};
    EXPECT_EQ(PropertyList::parse("<tree"), expected);
    EXPECT_TRUE(PropertyList::parse("<deep"));
    for (const char* bytes : {"<deeper", "<damaged", "{ a = b; }"})
        EXPECT_FALSE(PropertyList::parse(bytes)) << bytes;
}

TEST_F(MacFrameworks, ABundleSaysWhatItIs) {
    const TemporaryFolder folder;
    const std::string path = folder.path() / "A.app";
    Object* const whole = dictionary({{"CFBundleDisplayName", mac.text("D")},
                                      {"CFBundleName", mac.text("N")},
                                      {"CFBundleShortVersionString", mac.text("1")},
                                      {"CFBundleIdentifier", mac.text("com.x")}});
    const Inventory::BundleInformation nothing;
    mac.bundles = {{path, whole}};
    EXPECT_EQ(PropertyList::bundle(path), nothing) << "without a file the service isn't asked";
    std::filesystem::create_directories(path);
    std::ofstream(path + "/Info.plist") << "{ a = b; }";
    EXPECT_EQ(PropertyList::bundle(path), nothing) << "nor for a file beyond the bounds";
    std::ofstream(path + "/Info.plist") << "<";
    EXPECT_EQ(PropertyList::bundle(path), (Inventory::BundleInformation{"D", "N", "1", "com.x"}));
    mac.bundles = {{path, dictionary({{"CFBundleName", mac.number(1)}})}};
    EXPECT_EQ(PropertyList::bundle(path), nothing);
}

TEST_F(MacFrameworks, NamesAreOrderedWithoutRegardToCaseAndDigitsAsAsked) {
    const auto byValue = localisedComparison(DigitOrder::byValue);
    const auto byCharacter = localisedComparison(DigitOrder::byCharacter);
    EXPECT_TRUE(byValue("Speaker 9", "speaker 10") < 0);
    EXPECT_TRUE(byCharacter("Speaker 9", "speaker 10") > 0);
    EXPECT_TRUE(byValue("Safari", "safari") == 0);
    EXPECT_TRUE(byCharacter("A\xFF", "a\uFFFD") == 0) << "repaired before they are compared";
}

} // namespace
} // namespace velmo
