#include "platform/host/PropertyList.h"

#include "tests/platform/host/linux/PropertyListFiles.h"

#include <gtest/gtest.h>

namespace velmo {
namespace {

using Array = Value::Array;
using Dictionary = Value::Dictionary;

constexpr std::string_view allKinds = R"(<dict>
  <key>texts</key><array><string>caf&#233; &amp; 漢</string><string></string></array>
  <key>numbers</key><array><integer>0</integer><integer>-1</integer>
    <integer>9223372036854775807</integer><real>-2.5</real><true/><false/></array>
  <key>data</key><data>AP8=</data>
  <key>date</key><date>2024-01-01T00:00:00Z</date>
  <key>empty</key><dict><key></key><array/></dict>
</dict>)";

std::string nested(std::size_t depth) {
    return repeated("<array>", depth) + repeated("</array>", depth);
}

TEST(PropertyList, BothFormsAreReadTheSame) {
    const Value expected = Dictionary{
        {"texts", Array{"caf\u00E9 & \u6F22", ""}},
        {"numbers", Array{0, -1, INT64_MAX, -2.5, true, false}},
        {"data", Bytes{0x00, 0xFF}},
        {"date", Value()},
        {"empty", Dictionary{{"", Array{}}}},
    };
    EXPECT_EQ(PropertyList::parse(xmlList(allKinds)), expected);
    EXPECT_EQ(PropertyList::parse(binaryList(allKinds)), expected);
    EXPECT_EQ(PropertyList::parse("\xEF\xBB\xBF\n" + xmlList("<true/>")), Value(true));
}

TEST(PropertyList, ReadsASharedObjectAtEachReference) {
    const std::string_view objects = "bplist00\xA2\x01\x01\xD1\x02\x03\x51k\x09";
    const char offsets[] = {8, 11, 14, 16};
    const char trailer[32] = {0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 4,
                              0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 17};
    EXPECT_EQ(PropertyList::parse(std::string(objects) + std::string(offsets, 4)
                                  + std::string(trailer, 32)),
              Value(Array{Dictionary{{"k", true}}, Dictionary{{"k", true}}}));
}

TEST(PropertyList, IsRefusedBeyondItsBounds) {
    // With the array and the list itself, 32768 elements of XML.
    const std::string full = "<array>" + repeated("<dict><key>a</key><true/></dict>", 10922);
    for (auto* const form : {xmlList, binaryList}) {
        EXPECT_TRUE(PropertyList::parse(form(nested(129))));
        EXPECT_FALSE(PropertyList::parse(form(nested(130))));
        EXPECT_TRUE(PropertyList::parse(form(full + "</array>")));
        EXPECT_FALSE(PropertyList::parse(form(full + "<true/><true/></array>")));
    }
    EXPECT_FALSE(PropertyList::parse(xmlList(nested(100000))));
}

} // namespace
} // namespace velmo
