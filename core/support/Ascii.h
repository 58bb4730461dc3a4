#pragma once

#include <algorithm>
#include <string_view>

/// Judges bytes as ASCII: what identifiers, addresses and option values may be made of. Independent
/// of any locale; a byte of a longer UTF-8 sequence fails every test.
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

/// Returns the lower-case letter of an upper-case one, and any other byte as it is.
constexpr char lowercased(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// U+0000 to U+001F and U+007F.
constexpr bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

constexpr bool isSpaceOrControl(char c) {
    return c == ' ' || isControl(c);
}

/// Tells whether every byte is a letter, a digit or one of `others`; true for "".
constexpr bool isMadeOfLettersDigitsAnd(std::string_view others, std::string_view text) {
    return std::ranges::all_of(text,
                               [&](char c) { return isLetterOrDigit(c) || others.contains(c); });
}

} // namespace velmo::Ascii
