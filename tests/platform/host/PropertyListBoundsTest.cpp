#include "platform/host/PropertyListBounds.h"

#include "core/support/BigEndian.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace velmo {
namespace {

using namespace std::string_literals;

std::string number(std::size_t value) {
    Bytes bytes;
    BigEndian::append(bytes, value, 8);
    return std::string(textOf(bytes));
}

/// A list in the binary form: the objects, one after another, where each begins, and the trailer
/// for numbers of objects and offsets of one byte each.
std::string binary(const std::string& objects, const std::vector<std::uint8_t>& offsets,
                   std::size_t root = 0) {
    const std::string body = "bplist00" + objects;
    return body + std::string(offsets.begin(), offsets.end()) + std::string(6, '\0') + "\x01\x01"
           + number(offsets.size()) + number(root) + number(body.size());
}

/// The objects of which the first refers to all others.
std::string listOf(const std::vector<std::string>& objects) {
    std::string all;
    std::vector<std::uint8_t> offsets;
    for (const std::string& object : objects) {
        offsets.push_back(static_cast<std::uint8_t>(8 + all.size()));
        all += object;
    }
    return binary(all, offsets);
}

/// A dictionary of one member with this key.
std::string keyed(const std::string& key) {
    return listOf({"\xD1\x01\x02", key, "\x09"});
}

std::string changed(std::string bytes, std::size_t fromEnd, char byte) {
    bytes[bytes.size() - fromEnd] = byte;
    return bytes;
}

TEST(PropertyListBounds, RefuseWhatWouldExhaustOrEndAReader) {
    const std::string sound = keyed("\x52kk");
    // The key is the last byte of all, which is the low byte of the table's offset too: a text of
    // one character, which is not there.
    const std::string keyBeyond =
        binary("\xD1\x01\x02\x09" + std::string(0x51 - 12, '\x09'), {8, 0x51 + 3 + 31, 11});
    // Ten objects share one array of 100 references to the eleventh.
    const std::string shared = binary("\xAF\x10\x64" + std::string(100, '\x0A') + "\x09",
                                      {8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8 + 103});
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
        {"a shared array", listOf({"\xA2\x01\x01", "\xA2\x02\x02", "\x09"}), false},
        {"a shared set", listOf({"\xC2\x01\x01", "\xC2\x02\x02", "\x09"}), false},
        {"a shared dictionary", listOf({"\xA2\x01\x01", "\xD1\x02\x02", "\x51k"}), false},
        {"more references than bytes", shared, false},
    };

    for (const auto& [what, bytes, isAdmitted] : cases)
        EXPECT_EQ(PropertyListBounds::admits(bytes), isAdmitted) << what;
}

TEST(PropertyListBounds, CountContainersInXml) {
    for (const char* container : {"<array>", "<dict>", "<dict/>"}) {
        std::string bytes;
        for (int i = 0; i < 10000; ++i)
            bytes += container;
        EXPECT_TRUE(PropertyListBounds::admits(bytes)) << container;
        EXPECT_FALSE(PropertyListBounds::admits(bytes + container)) << container;
    }
}

} // namespace
} // namespace velmo
