#include "core/support/Text.h"

#include "core/support/Characters.h"

#include <simdjson.h>
#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace velmo::Text {

namespace {

Scalar illFormed(std::string_view bytes) {
    return {.value = replacementCharacter, .bytes = bytes, .valid = false};
}

utf8proc_int32_t asInt(char32_t scalar) {
    return static_cast<utf8proc_int32_t>(scalar);
}

utf8proc_category_t category(char32_t scalar) {
    return utf8proc_category(asInt(scalar));
}

/// U+0130 alone has a full lower case ("i" and a combining dot above) that is longer than the
/// simple mapping that utf8proc knows.
constexpr char32_t capitalIWithDot = 0x0130;
constexpr std::string_view lowercaseOfCapitalIWithDot = "i\u0307";

/// Returns the number of bytes of a scalar by its first byte, 0xC2 to 0xF4.
std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0xE0)
        return 2;
    return lead < 0xF0 ? 3 : 4;
}

struct ByteRange {
    unsigned char min = 0x80;
    unsigned char max = 0xBF;
};

/// Returns the bytes that may follow the first one, which leaves out overlong forms, surrogates and
/// scalars above U+10FFFF.
ByteRange secondByteRange(unsigned char lead) {
    switch (lead) {
    case 0xE0:
        return {.min = 0xA0};
    case 0xED:
        return {.max = 0x9F};
    case 0xF0:
        return {.min = 0x90};
    case 0xF4:
        return {.max = 0x8F};
    default:
        return {};
    }
}

/// The repaired text after one of the library's mappings of whole texts.
std::string mapped(std::string_view text, int options) {
    const std::string valid = repaired(text);
    utf8proc_uint8_t* result = nullptr;
    const auto length = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(valid.data()),
                                     static_cast<utf8proc_ssize_t>(valid.size()), &result,
                                     static_cast<utf8proc_option_t>(options));
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(result, &std::free);
    // Valid UTF-8 can always be mapped; only memory can be short.
    if (length < 0)
        throw std::bad_alloc();
    return {reinterpret_cast<const char*>(result), static_cast<std::size_t>(length)};
}

std::size_t utf16Length(char32_t scalar) {
    return scalar < 0x10000 ? 1 : 2;
}

} // namespace

Scalar firstScalar(std::string_view text) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byteAt(0);
    if (lead < 0x80)
        return {.value = lead, .bytes = text.substr(0, 1), .valid = true};
    if (lead < 0xC2 || lead > 0xF4)
        return illFormed(text.substr(0, 1));

    const std::size_t length = sequenceLength(lead);
    ByteRange range = secondByteRange(lead);
    char32_t value = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (i == text.size() || byteAt(i) < range.min || byteAt(i) > range.max)
            return illFormed(text.substr(0, i));
        value = value << 6 | (byteAt(i) & 0x3FU);
        range = {};
    }
    return {.value = value, .bytes = text.substr(0, length), .valid = true};
}

bool isAscii(std::string_view text) {
    // Gathered rather than left early, so that the compiler can take many bytes at once.
    constexpr std::size_t block = 64;
    for (; !text.empty(); text.remove_prefix(std::min(block, text.size()))) {
        unsigned char gathered = 0;
        for (const char c : text.substr(0, block))
            gathered |= static_cast<unsigned char>(c);
        if (gathered >= 0x80)
            return false;
    }
    return true;
}

bool isValidUtf8(std::string_view text) {
    return simdjson::validate_utf8(text.data(), text.size());
}

std::string repaired(std::string_view text) {
    if (isValidUtf8(text))
        return std::string(text);
    std::string result;
    result.reserve(text.size() + 2);
    for (const Scalar& scalar : Scalars(text))
        append(result, scalar.value);
    return result;
}

void append(std::string& text, char32_t scalar) {
    utf8proc_uint8_t bytes[4];
    const auto length = utf8proc_encode_char(asInt(scalar), bytes);
    text.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

std::size_t utf16Length(std::string_view text) {
    if (isAscii(text))
        return text.size();
    std::size_t units = 0;
    for (const Scalar& scalar : Scalars(text))
        units += utf16Length(scalar.value);
    return units;
}

std::u16string utf16(std::string_view text) {
    std::u16string units;
    units.reserve(text.size());
    for (const Scalar& scalar : Scalars(text)) {
        if (scalar.value < 0x10000) {
            units += static_cast<char16_t>(scalar.value);
            continue;
        }
        const char32_t above = scalar.value - 0x10000;
        units += static_cast<char16_t>(0xD800 + (above >> 10U));
        units += static_cast<char16_t>(0xDC00 + (above & 0x3FFU));
    }
    return units;
}

Character firstCharacter(std::string_view text) {
    return Characters(text).current();
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    for (Characters characters(text); !characters.atEnd(); characters.next())
        ++count;
    return count;
}

bool hasMoreCharactersThan(std::string_view text, std::size_t limit) {
    return prefix(text, limit).size() < text.size();
}

std::string_view prefix(std::string_view text, std::size_t characters) {
    // No character is shorter than a byte.
    if (text.size() <= characters)
        return text;
    std::size_t length = 0;
    Characters walk(text);
    for (std::size_t i = 0; i < characters && !walk.atEnd(); ++i, walk.next())
        length += walk.current().bytes.size();
    return text.substr(0, length);
}

std::string lowercased(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const Scalar& scalar : Scalars(text)) {
        if (scalar.value == capitalIWithDot)
            result += lowercaseOfCapitalIWithDot;
        else
            append(result, static_cast<char32_t>(utf8proc_tolower(asInt(scalar.value))));
    }
    return result;
}

std::string caseFolded(std::string_view text) {
    return mapped(text, UTF8PROC_STABLE | UTF8PROC_CASEFOLD);
}

std::string composed(std::string_view text) {
    return isAscii(text) ? std::string(text) : mapped(text, UTF8PROC_STABLE | UTF8PROC_COMPOSE);
}

bool isLetter(char32_t scalar) {
    const auto found = category(scalar);
    return found >= UTF8PROC_CATEGORY_LU && found <= UTF8PROC_CATEGORY_LO;
}

bool isNumber(char32_t scalar) {
    const auto found = category(scalar);
    return found >= UTF8PROC_CATEGORY_ND && found <= UTF8PROC_CATEGORY_NO;
}

bool isControl(char32_t scalar) {
    return scalar < 0x20 || (scalar >= 0x7F && scalar <= 0x9F) || scalar == 0x2028
           || scalar == 0x2029;
}

bool hasControl(std::string_view text) {
    return hasAny(text, isControl);
}

bool isNewline(char32_t scalar) {
    return (scalar >= 0x0A && scalar <= 0x0D) || scalar == 0x85 || scalar == 0x2028
           || scalar == 0x2029;
}

bool isBlank(char32_t scalar) {
    return isSpaceOrTab(scalar) || (scalar >= 0x80 && category(scalar) == UTF8PROC_CATEGORY_ZS);
}

bool isBlankOrNewline(char32_t scalar) {
    return isBlank(scalar) || isNewline(scalar);
}

bool isSpaceOrTab(char32_t scalar) {
    return scalar == U' ' || scalar == U'\t';
}

bool isOneOf(std::string_view text, std::span<const std::string_view> table) {
    return std::ranges::find(table, text) != table.end();
}

std::string replacedAll(std::string_view text, std::string_view what, std::string_view by) {
    std::string result;
    for (auto found = text.find(what); found != std::string_view::npos; found = text.find(what)) {
        result.append(text.substr(0, found)).append(by);
        text.remove_prefix(found + what.size());
    }
    return result.append(text);
}

bool hasAny(std::string_view text, ScalarTest test) {
    for (const Scalar& scalar : Scalars(text)) {
        if (test(scalar.value))
            return true;
    }
    return false;
}

std::string_view trimmed(std::string_view text, ScalarTest test) {
    const char* begin = nullptr;
    const char* end = nullptr;
    for (const Scalar& scalar : Scalars(text)) {
        if (test(scalar.value))
            continue;
        if (begin == nullptr)
            begin = scalar.bytes.data();
        end = scalar.bytes.data() + scalar.bytes.size();
    }
    return begin == nullptr ? std::string_view() : std::string_view(begin, end);
}

std::vector<std::string_view> pieces(std::string_view text, ScalarTest isSeparator) {
    std::vector<std::string_view> result;
    std::size_t begin = 0;
    std::size_t position = 0;
    const auto endPiece = [&] {
        if (position > begin)
            result.push_back(text.substr(begin, position - begin));
    };
    for (const Scalar& scalar : Scalars(text)) {
        const std::size_t after = position + scalar.bytes.size();
        if (isSeparator(scalar.value)) {
            endPiece();
            begin = after;
        }
        position = after;
    }
    endPiece();
    return result;
}

} // namespace velmo::Text
