#include "platform/host/PropertyListBounds.h"

#include "core/support/BigEndian.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace velmo {
namespace {

using namespace std::string_literals;

std::string repeat(const std::string& text, std::size_t count) {
    std::string result;
    while (count-- > 0)
        result += text;
    return result;
}

std::string number(std::size_t value) {
    Bytes bytes;
    BigEndian::append(bytes, value, 8);
    return std::string(textOf(bytes));
}

/// Returns a list in the binary form: the objects one after another, the table of their offsets,
/// and a trailer that says that references have one byte.
std::string binary(const std::string& objects, const std::vector<std::size_t>& offsets,
                   std::size_t offsetSize = 1) {
    const std::string body = "bplist00" + objects;
    Bytes table;
    for (const std::size_t offset : offsets)
        BigEndian::append(table, offset, offsetSize);
    return body + std::string(textOf(table)) + std::string(6, '\0') + static_cast<char>(offsetSize)
           + '\x01' + number(offsets.size()) + number(0) + number(body.size());
}

/// Returns a list of these objects, with the first one as its root.
std::string listOf(const std::vector<std::string>& objects) {
    std::string all;
    std::vector<std::size_t> offsets;
    for (const std::string& object : objects) {
        offsets.push_back(8 + all.size());
        all += object;
    }
    return binary(all, offsets, 4);
}

/// Returns a dictionary of one member with this key.
std::string keyed(const std::string& key) {
    return listOf({"\xD1\x01\x02", key, "\x09"});
}

/// Returns nested arrays: an array contains the next one `often` times, and the last array contains
/// this object.
std::string tower(std::size_t height, std::size_t often, const std::string& object) {
    std::vector<std::string> objects;
    while (objects.size() < height) {
        const auto next = static_cast<char>(objects.size() + 1);
        objects.push_back(static_cast<char>(0xA0 + often) + std::string(often, next));
    }
    objects.push_back(object);
    return listOf(objects);
}

/// Returns a text or data of this kind, made of `count` times `unit`.
std::string content(char kind, std::size_t count, const std::string& unit) {
    Bytes size;
    BigEndian::append(size, count, 4);
    return kind + "\x12"s + std::string(textOf(size)) + repeat(unit, count);
}

/// Returns a dictionary of 100 keys of 65535 bytes, which overlap.
std::string overlappingKeys() {
    std::string objects = "\xDF\x10\x64";
    std::vector<std::size_t> offsets{8};
    for (char key = 1; key <= 100; ++key)
        objects += key;
    objects += std::string(100, 1);
    for (std::size_t key = 0; key < 100; ++key)
        offsets.push_back(8 + objects.size() + key * 4);
    return binary(objects + repeat("\x5F\x11\xFF\xFF", 100) + std::string(65535, 'x'), offsets, 4);
}

std::string changed(std::string bytes, std::size_t fromEnd, char byte) {
    bytes[bytes.size() - fromEnd] = byte;
    return bytes;
}

TEST(PropertyListBounds, RefuseListsThatWouldExhaustOrCrashAReader) {
    const std::string sound = keyed("\x52kk");
    // The key begins at the very last byte, which is also the low byte of the table's offset: a
    // text of one character that lies beyond the end.
    const std::string keyBeyond =
        binary("\xD1\x01\x02\x09" + std::string(0x51 - 12, '\x09'), {8, 0x51 + 3 + 31, 11});
    const std::string wrapping = "\x13\x80"s + std::string(7, '\0'); // 2^63

    const struct {
        const char* what;
        std::string bytes;
        bool isAdmitted;
    } cases[] = {
        {"XML", "<a/>", true},
        {"XML behind a mark and blanks", "\xEF\xBB\xBF \t\r\n<a/>", true},
        {"nothing", "", false},
        {"the text form", "{ a = b; }", false},
        {"UTF-16", "\xFF\xFE<\0p\0"s, false},
        {"NUL in XML", "<a>\0</a>"s, false},
        {"the largest", "<" + std::string(1048575, 'x'), true},
        {"beyond the largest", "<" + std::string(1048576, 'x'), false},
        {"what is too short for a trailer", "bplist0" + number(1) + number(0) + number(0), false},
        {"a key", sound, true},
        {"a UTF-16 key", keyed("\x61\x6F\x22"), true},
        {"a key that is none", keyed("\x09"), false},
        {"data as a key", keyed("\x42kk"), false},
        {"NUL in a key", keyed("\x52k\0"s), false},
        {"NUL in a UTF-16 key", keyed("\x62\0k\0\0"s), false},
        {"half of a NUL in a UTF-16 key", keyed("\x62\0k\1\0"s), true},
        {"a key without its length", keyed("\x5F\x11\x01"), false},
        {"a key beyond the end", keyBeyond, false},
        {"the root is no object", changed(sound, 9, 3), false},
        {"the root is the last object", changed(sound, 9, 2), true},
        {"more objects than bytes", changed(sound, 24, 1), false},
        {"a table beyond the end", changed(sound, 8, 1), false},
        {"references of no size", changed(sound, 25, 0), false},
        {"a reference to no object", listOf({"\xA1\x01"}), false},
        {"a container that refers to itself", listOf({"\xA1\0"s}), false},
        {"elements without end", listOf({"\xAF\x10\xFF"}), false},
        {"2^63 members", listOf({"\xDF" + wrapping}), false},
        {"a shared scalar", listOf({"\xA2\x01\x01", "\x09"}), true},
        {"a shared empty container", listOf({"\xA2\x01\x01", "\xA0"}), true},
        {"a shared array", listOf({"\xA2\x01\x01", "\xA2\x02\x02", "\x09"}), true},
        {"a shared set", listOf({"\xC2\x01\x01", "\xC2\x02\x02", "\x09"}), true},
        {"a shared dictionary", listOf({"\xA2\x01\x01", "\xD1\x02\x02", "\x51k"}), true},
        {"a set that refers to itself", listOf({"\xC1\0"s}), false},
        {"a dictionary that contains itself", listOf({"\xD1\x01\x02", "\x51k", "\xA1\0"s}), false},
        {"as many objects as are allowed", binary("\x09", std::vector<std::size_t>(32768, 8)),
         true},
        {"one object more", binary("\x09", std::vector<std::size_t>(32769, 8)), false},
    };

    for (const auto& [what, bytes, isAdmitted] : cases)
        EXPECT_EQ(PropertyListBounds::admits(bytes), isAdmitted) << what;
}

TEST(PropertyListBounds, CountAnObjectAtEveryReference) {
    // Below the root, 48 nested arrays and a chain that ends with the same 48.
    const auto chain = [](std::size_t length) {
        std::vector<std::string> objects{"\xA2\x01\x31"};
        for (char next = 2; next <= 48; ++next)
            objects.push_back({'\xA1', next});
        objects.emplace_back("\xA0");
        while (objects.size() < 48 + length)
            objects.push_back({'\xA1', static_cast<char>(objects.size() + 1)});
        objects.emplace_back("\xA1\x01");
        return listOf(objects);
    };
    const auto wide = [](const std::string& count, std::size_t references) {
        return listOf({"\xAF\x11" + count + std::string(references, 1), "\x09"});
    };

    const struct {
        const char* what;
        std::string bytes;
        bool isAdmitted;
    } cases[] = {
        {"32767 nodes of 15 objects", tower(14, 2, "\x09"), true},
        {"65535 nodes of 16 objects", tower(15, 2, "\x09"), false},
        {"32768 nodes", wide("\x7F\xFF", 32767), true},
        {"32769 nodes", wide("\x80\0"s, 32768), false},
        {"a depth of 128", tower(128, 1, "\x09"), true},
        {"a depth of 129", tower(129, 1, "\x09"), false},
        {"a depth of 128 where it is shared", chain(80), true},
        {"a depth of 129 where it is shared", chain(81), false},
        {"16 texts of 256 KiB", tower(2, 4, content(0x5F, 262144, "x")), true},
        {"16 texts of a byte more", tower(2, 4, content(0x5F, 262145, "x")), false},
        {"16 times data of 256 KiB", tower(2, 4, content(0x4F, 262144, "x")), true},
        {"16 times data of a byte more", tower(2, 4, content(0x4F, 262145, "x")), false},
        {"16 UTF-16 texts, as UTF-8 of 256 KiB", tower(2, 4, content(0x6F, 87381, "xx")), true},
        {"16 UTF-16 texts of a unit more", tower(2, 4, content(0x6F, 87382, "xx")), false},
        {"keys that overlap", overlappingKeys(), false},
    };

    for (const auto& [what, bytes, isAdmitted] : cases)
        EXPECT_EQ(PropertyListBounds::admits(bytes), isAdmitted) << what;
}

TEST(PropertyListBounds, MeasureXmlAsItsReadersReadIt) {
    const auto nested = [](const std::string& opening, const std::string& closing,
                           std::size_t depth = 129) {
        return "<plist>" + repeat(opening, depth) + repeat(closing, depth) + "</plist>";
    };
    const auto declared = [](const std::string& what) { return "<?xml " + what + "?><true/>"; };
    const std::string array = "<array>";
    const std::string end = "</array>";

    const struct {
        const char* what;
        std::string bytes;
        bool isAdmitted;
    } cases[] = {
        {"a depth of 128", nested(array, end), true},
        {"a depth of 129", nested(array, end, 130), false},
        {"a depth of 129 in an element without content", nested(array, "<dict/>" + end), false},
        {"lists in lists", nested("<plist>", "", 130), false},
        {"elements without content", nested("<array/>", "", 1000), true},
        {"one after another", nested(array + end, "", 1000), true},
        {"elements in comments", nested("<!--" + array + "-->", "", 1000), true},
        {"an end in a comment", nested(array + "<!--" + end + "-->", ""), true},
        {"ends in comments", nested(array + "<!--" + end + "-->", "", 130), false},
        {"ends in a comment that looks ended", nested(array + "<!-->" + end + "-->", "", 130),
         false},
        {"ends in literal text", nested(array + "<![CDATA[>" + end + "]]>", "", 130), false},
        {"an end behind a quoted '>'", array + "<a b=\">" + end + "\"/>", false},
        {"the same in the other quotes", array + "<a b='>" + end + "'/>", false},
        {"a quote in quotes", array + "<a b=\"'\" c='>" + end + "\"'/>", false},
        {"a tag in a tag", array + "<a " + end, false},
        {"an instruction that goes on", array + "<?a >" + end + "?>", false},
        {"an instruction of nothing", array + "<?>" + end + "?>", false},
        {"a document type", "<!DOCTYPE plist PUBLIC \"-//A//EN\" \"http://a/\"><true/>", true},
        {"a document type with declarations", array + "<!DOCTYPE a [>" + end + "]>", false},
        {"an end of nothing", end, false},
        {"a comment without an end", "<!-- <array>", false},
        {"literal text without an end", "<![CDATA[", false},
        {"32768 elements", repeat("<a/>", 32768), true},
        {"32769 elements", repeat("<a/>", 32769), false},
        {"no encoding", declared("version=\"1.0\""), true},
        {"UTF-8", declared("version='1.0' encoding='utf-8'"), true},
        {"an encoding of one byte a character", declared("encoding=\"ISO-8859-1\""), true},
        {"UTF-7, in which '<' may be hidden", declared("encoding=\"UTF-7\""), false},
        {"two encodings", declared("encoding=\"UTF-8\" encoding=\"UTF-7\""), false},
        {"an encoding without quotes", declared("encoding=UTF-8"), false},
        {"no name behind it", declared("encoding"), false},
        {"256 entities before a text of a mebibyte",
         "<a>" + repeat("&lt;", 256) + std::string(1048576 - 256 * 4 - 3, 'x'), true},
        {"two such texts",
         repeat("<a>" + repeat("&lt;", 400) + std::string(500000, 'x') + "</a>", 2), false},
    };

    for (const auto& [what, bytes, isAdmitted] : cases)
        EXPECT_EQ(PropertyListBounds::admits(bytes), isAdmitted) << what;
}

} // namespace
} // namespace velmo
