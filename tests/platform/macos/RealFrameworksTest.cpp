#include "core/power/SleepSetting.h"
#include "platform/host/NameOrder.h"
#include "platform/host/PropertyList.h"
#include "platform/machine/macos/PowerRootDomain.h"
#include "platform/machine/macos/PowerSources.h"
#include "platform/macos/CoreFoundation.h"
#include "platform/posix/ChildProcess.h"

#include <gtest/gtest.h>

namespace velmo {
namespace {

TEST(ThisMac, SaysOfSleepWhatPmsetSays) {
    const auto printed = outputOf("/usr/bin/pmset", {"-g"});
    ASSERT_TRUE(printed);
    if (const auto property = sleepDisabledInRootDomain()) {
        EXPECT_EQ(property, parseSleepDisabled(*printed).value_or(false))
            << "a setting that was never changed has no line";
    }
    EXPECT_TRUE(readPowerSources());
}

TEST(ThisMac, TextsGoThereAndBack) {
    for (const std::string& text : {std::string(), std::string("a\0\u00E9\U0001F600", 8)})
        EXPECT_EQ(textIn(stringOf(text).get()), text);
    EXPECT_EQ(textIn(stringOf("a\xFF").get()), "a\uFFFD");
}

TEST(ThisMac, ReadsPropertyListsAndOrdersNames) {
    EXPECT_EQ(PropertyList::parse(R"(<?xml version="1.0"?><plist version="1.0"><dict>
        <key>a</key><array><true/><integer>-1</integer><real>2</real><data>AP8=</data></array>
        </dict></plist>)"),
              (Value::Dictionary{{"a", Value::Array{true, -1, 2.0, Bytes{0, 255}}}}));
    EXPECT_FALSE(PropertyList::parse("<?xml version=\"1.0\"?><plist><dict>"));
    EXPECT_TRUE(localisedComparison(DigitOrder::byValue)("Speaker 9", "speaker 10") < 0);
    EXPECT_TRUE(localisedComparison(DigitOrder::byCharacter)("Speaker 9", "speaker 10") > 0);
}

} // namespace
} // namespace velmo
