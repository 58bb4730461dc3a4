#pragma once

#include "core/support/Text.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

using Strings = std::vector<std::string>;

/// Returns the words between blanks and line feeds, for a command line or a table of short texts. A
/// word can be neither empty nor contain a blank or a line feed.
inline Strings words(std::string_view text) {
    const auto pieces = Text::pieces(text, [](char32_t c) { return c == U' ' || c == U'\n'; });
    return {pieces.begin(), pieces.end()};
}

inline std::string times(std::size_t count, std::string_view text) {
    std::string result;
    for (; count > 0; --count)
        result += text;
    return result;
}

/// Returns the text with its first `from` replaced by `to`. A text without `from` is an error of
/// the test.
inline std::string changed(std::string text, std::string_view from, std::string_view to) {
    return text.replace(text.find(from), from.size(), to);
}

/// Returns the frame once for each text, with the text in place of its "#".
inline Strings each(const std::string& frame, const Strings& texts) {
    Strings result;
    for (const std::string& text : texts)
        result.push_back(changed(frame, "#", text));
    return result;
}

inline Strings joined(Strings all, const Strings& more) {
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

/// Expects the rule to accept and to refuse these texts. A rule returns a boolean or an optional.
template<class Rule>
void expectVerdicts(const Rule& rule, const Strings& accepted, const Strings& refused) {
    for (const std::string& text : accepted)
        EXPECT_TRUE(rule(text)) << testing::PrintToString(text);
    for (const std::string& text : refused)
        EXPECT_FALSE(rule(text)) << testing::PrintToString(text);
}

template<class Rule>
void expectRefused(const Rule& rule, const Strings& refused) {
    expectVerdicts(rule, {}, refused);
}

template<class Rule>
void expectRefused(const Rule& rule, const std::string& frame, const Strings& texts) {
    expectVerdicts(rule, {}, each(frame, texts));
}

} // namespace velmo
