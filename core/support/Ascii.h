#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

/// Bytes judged as ASCII: what identifiers, addresses and option values may be made of. No locale,
/// and no byte of a longer UTF-8 sequence passes any test.
namespace velmo::Ascii {

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

constexpr bool isLetterOrDigit(char c) {
    return isLetter(c) || isDigit(c);
}

constexpr bool isLowercaseHex(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f');
}

constexpr bool isHex(char c) {
    return isLowercaseHex(c) || (c >= 'A' && c <= 'F');
}

/// U+0000 to U+001F and U+007F.
constexpr bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

constexpr bool isSpaceOrControl(char c) {
    return c == ' ' || isControl(c);
}

/// Whether every byte is a letter, a digit or one of `others`; true for "".
constexpr bool isMadeOfLettersDigitsAnd(std::string_view others, std::string_view text) {
    return std::ranges::all_of(text,
                               [&](char c) { return isLetterOrDigit(c) || others.contains(c); });
}

/// The value of 1 to `longest` digits that do not begin with "0": no sign, no blank, and thereby
/// one spelling for each number. `longest` is at most 18.
constexpr std::optional<std::int64_t> positiveDecimal(std::string_view text, std::size_t longest) {
    if (text.empty() || text.size() > longest || text.front() == '0'
        || !std::ranges::all_of(text, isDigit))
        return std::nullopt;
    std::int64_t value = 0;
    for (const char digit : text)
        value = value * 10 + (digit - '0');
    return value;
}

/// The value of one or more digits and nothing else; leading zeros are let pass. Absent when it
/// does not fit.
template<std::integral Integer>
constexpr std::optional<Integer> decimal(std::string_view text) {
    constexpr Integer ten = 10;
    constexpr Integer highest = std::numeric_limits<Integer>::max();
    if (text.empty() || !std::ranges::all_of(text, isDigit))
        return std::nullopt;
    Integer value = 0;
    for (const char c : text) {
        const auto digit = static_cast<Integer>(c - '0');
        if (value > (highest - digit) / ten)
            return std::nullopt;
        value = static_cast<Integer>((value * ten) + digit);
    }
    return value;
}

/// The same with at most one sign before the digits. The lowest integer of the type is refused
/// too: its magnitude does not fit.
template<std::signed_integral Integer>
constexpr std::optional<Integer> signedDecimal(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+'))
        text.remove_prefix(1);
    return decimal<Integer>(text).transform(
        [&](Integer magnitude) { return negative ? static_cast<Integer>(-magnitude) : magnitude; });
}

} // namespace velmo::Ascii
