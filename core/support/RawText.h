#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

/// Enumerations with a text for each case: the form in which they are written, logged and read.
namespace velmo {

/// The texts of an enumeration whose cases count up from 0, in the order of the cases:
///
///     template<>
///     inline constexpr auto rawTexts<Revert> = std::to_array<std::string_view>({"heartbeat",
///     ...});
template<class E>
inline constexpr std::array<std::string_view, 0> rawTexts{};

template<class E>
concept HasRawText = rawTexts<E>.size() > 0;

template<HasRawText E>
constexpr std::string_view rawText(E value) {
    return rawTexts<E>[static_cast<std::size_t>(std::to_underlying(value))];
}

/// Exact; absent for any other text.
template<HasRawText E>
constexpr std::optional<E> fromRawText(std::string_view text) {
    for (std::size_t i = 0; i < rawTexts<E>.size(); ++i) {
        if (rawTexts<E>[i] == text)
            return static_cast<E>(i);
    }
    return std::nullopt;
}

/// Every case, in order.
template<HasRawText E>
inline constexpr auto allCases = [] {
    std::array<E, rawTexts<E>.size()> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i)
        cases[i] = static_cast<E>(i);
    return cases;
}();

} // namespace velmo
