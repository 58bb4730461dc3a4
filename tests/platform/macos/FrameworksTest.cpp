#include "platform/host/NameOrder.h"
#include "platform/host/PropertyList.h"
#include "platform/machine/macos/PowerRootDomain.h"
#include "platform/machine/macos/PowerSources.h"
#include "platform/xpc/SigningTeam.h"
#include "tests/platform/macos/FakeFrameworks.h"

#include "lab/instruments/TemporaryFolder.h"
#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <string>

namespace velmo {
namespace {

using fake::Array;
using fake::Dictionary;
using fake::Object;

class MacFrameworks : public testing::Test {
protected:
    void SetUp() override { fake::mac = &mac; }

    void TearDown() override { EXPECT_EQ(mac.owed(), 0) << "not released, or too often"; }

    Object* text(std::u16string value) { return mac.make(std::move(value)); }

    Object* number(std::int64_t value) { return mac.make(value); }

    fake::Mac mac;
};

TEST_F(MacFrameworks, SleepDisabledIsABooleanOrNothing) {
    const std::pair<Object*, std::optional<bool>> cases[] = {{mac.make(true), true},
                                                             {mac.make(false), false},
                                                             {number(1), {}},
                                                             {text(u"Yes"), {}},
                                                             {nullptr, {}}};
    for (const auto& [property, expected] : cases) {
        mac.rootDomain = {{u"SleepDisabled", property}};
        EXPECT_EQ(sleepDisabledInRootDomain(), expected);
    }
    mac.hasRootDomain = false;
    mac.rootDomain = {{u"SleepDisabled", mac.make(true)}};
    EXPECT_EQ(sleepDisabledInRootDomain(), std::nullopt);
}

TEST_F(MacFrameworks, TheLidIsTwoPropertiesOrNothing) {
    Object* const no = mac.make(false);
    Object* const yes = mac.make(true);
    mac.rootDomain = {{u"AppleClamshellState", yes}, {u"AppleClamshellCausesSleep", no}};
    EXPECT_EQ(lidInRootDomain(), (LidState{.isShut = true, .causesSleep = false}));
    mac.rootDomain = {{u"AppleClamshellState", yes}};
    EXPECT_EQ(lidInRootDomain(), std::nullopt);
    mac.rootDomain = {{u"AppleClamshellCausesSleep", yes}};
    EXPECT_EQ(lidInRootDomain(), std::nullopt);
}

TEST_F(MacFrameworks, ARequestToSleepIsTakenOrNot) {
    EXPECT_TRUE(requestSystemSleep());
    mac.takesSleepRequests = false;
    EXPECT_FALSE(requestSystemSleep());
    mac.hasPowerManagement = false;
    EXPECT_FALSE(requestSystemSleep());
    EXPECT_EQ(mac.sleepRequests, 2);
}

TEST_F(MacFrameworks, PowerSourcesAreReadAsTheyAre) {
    mac.providingType = text(u"Battery Power");
    mac.powerSources = mac.make(Array{
        mac.make(Dictionary{{u"Type", text(u"UPS")},
                            {u"Current Capacity", number(80)},
                            {u"Max Capacity", number(100)}}),
        mac.make(fake::Other{}), // gone since the list was made
        mac.make(Dictionary{{u"Type", number(1)},
                            {u"Current Capacity", mac.make(12.5)},
                            {u"Max Capacity", mac.make(true)}}),
        mac.make(Dictionary{{u"Current Capacity", mac.make(12.0)}}),
    });
    const auto snapshot = readPowerSources();
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->providingType, "Battery Power");
    ASSERT_EQ(snapshot->sources.size(), 3U);
    EXPECT_EQ(snapshot->sources[0].type, "UPS");
    EXPECT_EQ(snapshot->sources[0].currentCapacity, 80);
    EXPECT_EQ(snapshot->sources[0].maximumCapacity, 100);
    EXPECT_EQ(snapshot->sources[1].type, std::nullopt);
    EXPECT_EQ(snapshot->sources[1].currentCapacity, std::nullopt);
    EXPECT_EQ(snapshot->sources[1].maximumCapacity, std::nullopt);
    EXPECT_EQ(snapshot->sources[2].type, std::nullopt);
    EXPECT_EQ(snapshot->sources[2].currentCapacity, 12);
}

TEST_F(MacFrameworks, WithoutSnapshotOrListThereIsLessToRead) {
    const auto listless = readPowerSources();
    ASSERT_TRUE(listless);
    EXPECT_EQ(listless->providingType, std::nullopt);
    EXPECT_TRUE(listless->sources.empty());
    mac.hasSnapshot = false;
    EXPECT_FALSE(readPowerSources());
}

TEST_F(MacFrameworks, TheTeamIsTextOrNothing) {
    const std::pair<std::u16string, std::optional<std::string>> cases[] = {
        {u"ABCDE12345", "ABCDE12345"},
        {u"Aé漢", "Aé漢"},
        {{u"AB\0C", 4}, std::string("AB\0C", 4)}, // NUL hides nothing
        {u"", ""},
        {{u'A', char16_t{0xD800}, u'B'}, {}},
    };
    for (const auto& [team, expected] : cases) {
        mac.signingInformation = mac.make(Dictionary{{u"teamid", text(team)}});
        EXPECT_EQ(currentSigningTeam(), expected) << testing::PrintToString(team);
    }
    mac.signingInformation = mac.make(Dictionary{{u"teamid", number(12345)}});
    EXPECT_EQ(currentSigningTeam(), std::nullopt);
    mac.signingInformation = mac.make(Dictionary{});
    EXPECT_EQ(currentSigningTeam(), std::nullopt) << "signed ad hoc";
    mac.signingInformation = nullptr;
    EXPECT_EQ(currentSigningTeam(), std::nullopt);
}

TEST_F(MacFrameworks, EveryStepToTheTeamMayFail) {
    mac.signingInformation = mac.make(Dictionary{{u"teamid", text(u"ABCDE12345")}});
    for (mac.failingSigningStep = 1; mac.failingSigningStep <= 3; ++mac.failingSigningStep)
        EXPECT_EQ(currentSigningTeam(), std::nullopt) << mac.failingSigningStep;
}

TEST_F(MacFrameworks, APropertyListIsReadWithItsKinds) {
    Object* const lone = text({char16_t{0xD800}});
    Object* const tree = mac.make(
        Dictionary{{u"text", text(u"\u00E9")},
                   {u"list", mac.make(Array{number(-1), mac.make(2.0), mac.make(0x1p64),
                                            mac.make(true), mac.make(Bytes{0, 255}),
                                            mac.make(fake::Other{}), lone, mac.make(Array{})})},
                   {{char16_t{0xDC00}}, number(1)}});
    const Value expected =
        Value::Dictionary{{"text", "\u00E9"},
                          {"list", Value::Array{-1, 2.0, 0x1p64, true, Bytes{0, 255}, Value(),
                                                Value(), Value::Array{}}}};
    Object* deepest = mac.make(Array{});
    for (int i = 0; i < 128; ++i)
        deepest = mac.make(Array{deepest});
    mac.propertyLists = {{"<tree", tree},
                         {"<deep", deepest},
                         {"<deeper", mac.make(Dictionary{{u"a", deepest}})},
                         {"{ a = b; }", tree}};
    EXPECT_EQ(PropertyList::parse("<tree"), expected);
    EXPECT_TRUE(PropertyList::parse("<deep"));
    for (const char* bytes : {"<deeper", "<damaged", "{ a = b; }", ""})
        EXPECT_FALSE(PropertyList::parse(bytes)) << bytes;
}

TEST_F(MacFrameworks, ABundleSaysWhatItIs) {
    const TemporaryFolder folder;
    const auto bundle = [&](const char* name, Object* information, bool hasFile = true) {
        const auto path = folder.path() / name;
        std::filesystem::create_directories(path / "Contents");
        if (hasFile)
            std::ofstream(path / "Contents" / "Info.plist") << "<";
        if (information != nullptr)
            mac.bundles[path.string()] = information;
        return PropertyList::bundle(path.string());
    };
    Object* const whole = mac.make(Dictionary{{u"CFBundleDisplayName", text(u"D")},
                                              {u"CFBundleName", text(u"N")},
                                              {u"CFBundleShortVersionString", text(u"1")},
                                              {u"CFBundleIdentifier", text(u"com.x")}});
    const Inventory::BundleInformation nothing;
    EXPECT_EQ(bundle("A.app", whole), (Inventory::BundleInformation{"D", "N", "1", "com.x"}));
    EXPECT_EQ(bundle("B.app", mac.make(Dictionary{{u"CFBundleName", number(1)}})), nothing);
    EXPECT_EQ(bundle("C.app", nullptr), nothing);
    EXPECT_EQ(bundle("D.app", whole, false), nothing) << "nothing to read: the service isn't asked";
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
