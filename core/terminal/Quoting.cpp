#include "core/terminal/Quoting.h"

#include "core/support/Text.h"

namespace velmo::DevTerminal {

std::string shellQuote(std::string_view text) {
    return std::string("'").append(Text::replacedAll(text, "'", R"('\'')")).append("'");
}

std::string appleScriptString(std::string_view text) {
    // Backslashes come first, so that the one that escapes a quote is not doubled.
    const std::string escaped = Text::replacedAll(text, R"(\)", R"(\\)");
    return '"' + Text::replacedAll(escaped, R"(")", R"(\")") + '"';
}

} // namespace velmo::DevTerminal
