#include "platform/host/PropertyList.h"

#include "core/apps/DockPrefsParser.h"
#include "core/input/SymbolicHotKeys.h"
#include "tests/platform/host/linux/PropertyListFiles.h"

#include "lab/instruments/TemporaryFolder.h"
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <sys/stat.h>

namespace velmo {
namespace {

using namespace std::string_literals;
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

TEST(PropertyList, BothFormsHoldTheSame) {
    const Value expected = Dictionary{
        {"texts", Array{"caf\u00E9 & \u6F22", ""}},
        {"numbers", Array{0, -1, INT64_MAX, -2.5, true, false}},
        {"data", Bytes{0x00, 0xFF}},
        {"date", Value()},
        {"empty", Dictionary{{"", Array{}}}},
    };
    EXPECT_EQ(PropertyList::parse(xmlList(allKinds)), expected);
    EXPECT_EQ(PropertyList::parse(binaryList(allKinds)), expected);
    EXPECT_EQ(PropertyList::parse(xmlList("<string>alone</string>")), Value("alone"));
    EXPECT_EQ(PropertyList::parse("\xEF\xBB\xBF\n" + xmlList("<true/>")), Value(true));
}

/// A list of objects in the binary form, of which the first holds all others.
std::string listOf(const std::vector<std::string>& objects) {
    std::string bytes = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += static_cast<char>(bytes.size());
        bytes += object;
    }
    const auto number = [](std::size_t value) {
        return std::string(7, '\0') + static_cast<char>(value);
    };
    return bytes + table + std::string(6, '\0') + "\x01\x01" + number(objects.size()) + number(0)
           + number(bytes.size());
}

/// Each array holds the next one twice: as many values as 2 to the power of levels.
std::string doubling(std::uint8_t levels) {
    std::vector<std::string> objects;
    for (std::uint8_t level = 1; level <= levels; ++level)
        objects.push_back("\xA2" + std::string(2, static_cast<char>(level)));
    objects.emplace_back("\x09");
    return listOf(objects);
}

/// A dictionary of one member, whose key is this object.
std::string keyed(const std::string& key) {
    return listOf({"\xD1\x01\x02", key, "\x09"});
}

TEST(PropertyList, WhatWouldExhaustTheReaderIsRefused) {
    EXPECT_EQ(PropertyList::parse(doubling(1)), (Value{Array{true, true}}));
    EXPECT_EQ(PropertyList::parse(listOf({"\xA2\x01\x01", "\xA0"})),
              (Value{Array{Array{}, Array{}}}));
    EXPECT_EQ(PropertyList::parse(keyed("\x52kk")), (Dictionary{{"kk", true}}));
    EXPECT_EQ(PropertyList::parse(keyed(std::string("\x61\x6F\x22"))),
              (Dictionary{{"\u6F22", true}}));
    std::string many = "<array>";
    for (int i = 0; i < 10000; ++i)
        many += "<dict><key>a</key><true/></dict>";
    for (auto* const form : {xmlList, binaryList}) {
        EXPECT_TRUE(PropertyList::parse(form(nested(129))));
        for (const std::string& content :
             {nested(130), many + "</array>", "<string>" + std::string(1048576, 'x') + "</string>"})
            EXPECT_FALSE(PropertyList::parse(form(content))) << content.substr(0, 60);
    }
    EXPECT_FALSE(PropertyList::parse(xmlList(nested(100000))));
    for (const std::string& bytes :
         {""s, "bplist00"s, "{ a = b; }"s, "(a)"s, "\xFF\xFE<\0p\0"s, doubling(2), doubling(60)})
        EXPECT_FALSE(PropertyList::parse(bytes)) << bytes;
    const std::string members(7, '\0'); // beside the highest byte of their number
    for (const std::string& key :
         {"\x09"s, "\x5F\x11\x01"s, "\xDF\x13\x80" + members, "\x52k\0"s, "\x62\0k\0\0"s})
        EXPECT_FALSE(PropertyList::parse(keyed(key))) << testing::PrintToString(key);
}

/// Whatever is made of it, making it ends and stays within memory.
TEST(PropertyList, ADamagedListIsReadOrRefused) {
    const std::string forms[] = {xmlList(allKinds), binaryList(allKinds)};
    for (const std::string& whole : forms) {
        for (std::size_t i = 0; i < whole.size(); ++i) {
            PropertyList::parse(whole.substr(0, i));
            for (const unsigned bits : {0x01U, 0x80U, 0xFFU}) {
                std::string damaged = whole;
                damaged[i] = static_cast<char>(static_cast<unsigned char>(damaged[i]) ^ bits);
                PropertyList::parse(damaged);
            }
        }
        EXPECT_FALSE(PropertyList::parse(whole.substr(0, whole.size() / 2)));
    }
}

class PropertyListOnDisk : public testing::TestWithParam<bool> {
protected:
    std::optional<Value> written(std::string_view content) const {
        writeFile(file, GetParam() ? binaryList(content) : xmlList(content));
        return PropertyList::read(file.string());
    }

    TemporaryFolder temporary;
    std::filesystem::path file = temporary.path() / "preferences.plist";
};

INSTANTIATE_TEST_SUITE_P(InXmlAndBinary, PropertyListOnDisk, testing::Bool());

TEST_P(PropertyListOnDisk, IsARegularFile) {
    EXPECT_FALSE(PropertyList::read(file.string()));
    ASSERT_TRUE(written("<true/>"));
    const auto link = temporary.path() / "link";
    std::filesystem::create_symlink(file, link);
    EXPECT_TRUE(PropertyList::read(link.string()));
    const auto fifo = temporary.path() / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& path : {fifo.string(), temporary.path().string(), std::string(),
                                    file.string() + std::string("\0x", 2)})
        EXPECT_FALSE(PropertyList::read(path)) << path;
}

TEST_P(PropertyListOnDisk, HoldsTheKeyboardShortcuts) {
    const auto preferences = written(R"(<dict><key>AppleSymbolicHotKeys</key><dict>
      <key>32</key><dict><key>enabled</key><true/><key>value</key><dict>
        <key>parameters</key>
        <array><integer>65535</integer><integer>126</integer><integer>262144</integer></array>
        <key>type</key><string>standard</string></dict></dict>
      <key>33</key><dict><key>enabled</key><false/></dict>
      <key>36</key><dict><key>enabled</key><real>1</real><key>value</key><dict>
        <key>parameters</key>
        <array><integer>65535</integer><integer>103</integer><integer>-1</integer></array>
        <key>type</key><string>standard</string></dict></dict>
    </dict></dict>)");
    ASSERT_TRUE(preferences);
    const Value& hotKeys = (*preferences)["AppleSymbolicHotKeys"];
    const auto resolved = [&](int number) {
        return SymbolicHotKeys::resolve(number, hotKeys.dictionary());
    };
    EXPECT_EQ(resolved(32), (SymbolicHotKeys::HotKey{126, 0xA40000}));
    EXPECT_FALSE(resolved(33));
    EXPECT_FALSE(resolved(36));
    EXPECT_EQ(resolved(64), (SymbolicHotKeys::HotKey{49, 0x100000}));
}

TEST_P(PropertyListOnDisk, HoldsTheDock) {
    const auto preferences = written(R"(<dict>
      <key>persistent-apps</key><array>
        <dict><key>GUID</key><integer>3141592653</integer>
          <key>tile-type</key><string>file-tile</string><key>tile-data</key><dict>
            <key>bundle-identifier</key><string>com.apple.Safari</string>
            <key>file-label</key><string>Safari</string>
            <key>file-mod-date</key><integer>0</integer><key>book</key><data>Ym9vaw==</data>
            <key>file-data</key><dict><key>_CFURLStringType</key><integer>15</integer>
              <key>_CFURLString</key><string>file:///My%20Apps/Safari.app/</string>
            </dict></dict></dict>
        <dict><key>tile-type</key><string>spacer-tile</string>
          <key>tile-data</key><dict/></dict></array>
      <key>persistent-others</key><array>
        <dict><key>tile-type</key><string>directory-tile</string><key>tile-data</key><dict>
          <key>file-label</key><string>Downloads</string><key>file-data</key><dict>
            <key>_CFURLString</key><string>file:///Users/u/Downloads/</string>
          </dict></dict></dict></array>
      <key>recent-apps</key><array/>
      <key>mod-count</key><integer>1234</integer>
      <key>show-recents</key><false/>
      <key>trash-full</key><true/>
    </dict>)");
    ASSERT_TRUE(preferences && preferences->dictionary() != nullptr);
    EXPECT_EQ(DockPrefsParser::parse(*preferences->dictionary(), "/Users/u/Downloads"),
              (DockPrefs{.apps = {{"com.apple.Safari", "/My Apps/Safari.app", "Safari"}},
                         .others = {{"/Users/u/Downloads", "Downloads", "downloads"}},
                         .modCount = 1234,
                         .trashFull = true,
                         .showRecents = false}));
}

} // namespace
} // namespace velmo
