#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// A script's text without the content of its string literals, and the content of each literal.
struct ScriptParts {
    std::string around; ///< with the opening quote of each literal
    std::vector<std::string> literals;
};

inline char afterBackslash(char c) {
    switch (c) {
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return c;
    }
}

/// Takes a script apart by AppleScript's rules: a literal ends at the first quote without a
/// backslash before it; after a backslash n, r and t are control characters and everything else is
/// itself.
inline ScriptParts readScript(std::string_view script) {
    ScriptParts parts;
    for (std::size_t i = 0; i < script.size(); ++i) {
        parts.around += script[i];
        if (script[i] != '"')
            continue;
        std::string& literal = parts.literals.emplace_back();
        for (++i; i < script.size() && script[i] != '"'; ++i) {
            if (script[i] != '\\') {
                literal += script[i];
                continue;
            }
            const char escaped = ++i < script.size() ? script[i] : '\0';
            literal += afterBackslash(escaped);
        }
    }
    return parts;
}

} // namespace velmo
