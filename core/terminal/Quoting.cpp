#include "core/terminal/Quoting.h"

#include "core/support/Text.h"

namespace velmo::DevTerminal {

std::string shellQuote(std::string_view text) {
    return std::string("'").append(Text::replacedAll(text, "'", R"('\'')")).append("'");
}

std::string appleScriptString(std::string_view text) {
    // The backslash first: the one that a quote gets must not be doubled.
    const std::string escaped = Text::replacedAll(text, R"(\)", R"(\\)");
    return '"' + Text::replacedAll(escaped, R"(")", R"(\")") + '"';
}

} // namespace velmo::DevTerminal
