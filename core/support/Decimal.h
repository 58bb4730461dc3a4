#pragma once

#include <charconv>
#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

/// Whole numbers as arguments and lines spell them: ASCII digits, without blanks. A number beyond
/// the range is refused like any other text.
namespace velmo::Decimal {

template<std::integral Integer>
struct Range {
    Integer min = std::numeric_limits<Integer>::min();
    Integer max = std::numeric_limits<Integer>::max();
};

/// Reads digits with perhaps a "-" before them. Leading zeros are accepted.
template<std::integral Integer>
std::optional<Integer> parse(std::string_view text, Range<Integer> range = {}) {
    Integer value{};
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const auto [rest, error] = std::from_chars(begin, end, value);
    if (error != std::errc() || rest != end || value < range.min || value > range.max)
        return std::nullopt;
    return value;
}

/// Reads digits alone. Leading zeros are accepted.
template<std::integral Integer>
std::optional<Integer> parseUnsigned(std::string_view text, Range<Integer> range = {}) {
    return text.starts_with('-') ? std::nullopt : parse<Integer>(text, range);
}

/// Reads digits with perhaps one sign, "+" or "-", before them. Leading zeros are accepted.
template<std::signed_integral Integer>
std::optional<Integer> parseSigned(std::string_view text, Range<Integer> range = {}) {
    const bool plus = text.starts_with('+');
    return plus ? parseUnsigned<Integer>(text.substr(1), range) : parse<Integer>(text, range);
}

/// Reads digits, the first of them not "0", so that each number from 1 up has one spelling.
inline std::optional<std::int64_t> parsePositive(std::string_view text, std::int64_t max) {
    return text.starts_with('0') ? std::nullopt
                                 : parseUnsigned<std::int64_t>(text, {.min = 1, .max = max});
}

} // namespace velmo::Decimal
