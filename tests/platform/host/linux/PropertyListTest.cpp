#include "platform/host/PropertyList.h"

#include "tests/platform/host/linux/PropertyListFiles.h"

#include "lab/instruments/TemporaryFolder.h"
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
    std::string text;
    for (std::size_t i = 0; i < depth; ++i)
        text += "<array>";
    for (std::size_t i = 0; i < depth; ++i)
        text += "</array>";
    return text;
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

TEST(PropertyList, IsRefusedBeyondItsBounds) {
    std::string full = "<array>"; // itself a container
    for (int i = 1; i < 10000; ++i)
        full += "<dict><key>a</key><true/></dict>";
    for (auto* const form : {xmlList, binaryList}) {
        EXPECT_TRUE(PropertyList::parse(form(nested(129))));
        EXPECT_FALSE(PropertyList::parse(form(nested(130))));
        EXPECT_TRUE(PropertyList::parse(form(full + "</array>")));
        EXPECT_FALSE(PropertyList::parse(form(full + "<array><true/></array></array>")));
    }
    EXPECT_FALSE(PropertyList::parse(xmlList(nested(100000))));
    EXPECT_FALSE(PropertyList::parse("{ a = b; }")); // libplist reads that form too
}

TEST(PropertyList, IsRefusedWhenItIsCutOffAnywhere) {
    for (auto* const form : {xmlList, binaryList}) {
        const std::string whole = form(allKinds);
        const std::string_view end = whole.starts_with('<') ? "</plist>\n" : "";
        for (std::size_t length = 0; length < whole.size() - end.size(); ++length)
            EXPECT_FALSE(PropertyList::parse(whole.substr(0, length))) << length;
    }
}

TEST(PropertyList, OnDiskIsARegularFile) {
    const TemporaryFolder temporary;
    const auto file = temporary.path() / "preferences.plist";
    const auto link = temporary.path() / "link";
    EXPECT_FALSE(PropertyList::read(file.string()));
    writeFile(file, xmlList("<true/>"));
    std::filesystem::create_symlink(file, link);
    EXPECT_EQ(PropertyList::read(link.string()), Value(true));
    for (const std::string& path :
         {temporary.path().string(), file.string() + std::string("\0x", 2)})
        EXPECT_FALSE(PropertyList::read(path)) << path;
}

} // namespace
} // namespace velmo
