#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

/// Enumerations with a text for each case: the form in which they are written, logged and read.
namespace velmo {

/// The texts of an enumeration, in the order of its cases, which count up from 0. A missing text,
/// or one too many, does not compile.
///
///     template<>
///     inline constexpr auto rawTexts<Verb> = std::to_array<std::string_view>({"get", "set"});
template<class E>
inline constexpr std::array<std::string_view, 0> rawTexts{};

template<class E>
concept HasRawText = rawTexts<E>.size() > 0;

namespace detail {

/// Returns whether an enumeration has a case with this value. Compilers print a case by its name,
/// and any other value as a cast, "(velmo::Verb)2".
template<auto value>
consteval bool isCase() {
    constexpr std::string_view function = __PRETTY_FUNCTION__;
    constexpr std::string_view label = "value = ";
    return function[function.find(label) + label.size()] != '(';
}

template<HasRawText E>
inline constexpr bool hasTextForEachCase = isCase<static_cast<E>(rawTexts<E>.size() - 1)>()
                                           && !isCase<static_cast<E>(rawTexts<E>.size())>();

} // namespace detail

template<HasRawText E>
constexpr std::string_view rawText(E value) {
    static_assert(detail::hasTextForEachCase<E>);
    return rawTexts<E>[static_cast<std::size_t>(std::to_underlying(value))];
}

/// Returns the case with exactly this text.
template<HasRawText E>
constexpr std::optional<E> fromRawText(std::string_view text) {
    static_assert(detail::hasTextForEachCase<E>);
    for (std::size_t i = 0; i < rawTexts<E>.size(); ++i) {
        if (rawTexts<E>[i] == text)
            return static_cast<E>(i);
    }
    return std::nullopt;
}

/// Every case, in order.
template<HasRawText E>
inline constexpr auto allCases = [] {
    static_assert(detail::hasTextForEachCase<E>);
    std::array<E, rawTexts<E>.size()> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i)
        cases[i] = static_cast<E>(i);
    return cases;
}();

} // namespace velmo
