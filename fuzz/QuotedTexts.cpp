#include "core/terminal/DevTerminal.h"
#include "fuzz/Fuzz.h"
#include "lab/instruments/ScriptParts.h"

namespace velmo::Fuzz {

namespace {

/// Returns the word that a POSIX shell makes of single-quoted parts and escaped characters; absent
/// if the text contains anything else.
std::optional<std::string> shellWord(std::string_view text) {
    std::string word;
    while (!text.empty()) {
        if (text.starts_with('\\') && text.size() > 1) {
            word += text[1];
            text.remove_prefix(2);
            continue;
        }
        const std::size_t end = text.find('\'', 1);
        if (!text.starts_with('\'') || end == std::string_view::npos)
            return std::nullopt;
        word += text.substr(1, end - 1);
        text.remove_prefix(end + 1);
    }
    return word;
}

void checkQuotedTexts(Input input) {
    const std::string text(input.rest());
    require(shellWord(DevTerminal::shellQuote(text)) == text);
    const ScriptParts script = readScript(DevTerminal::appleScriptString(text));
    require(script.around == "\"" && script.literals == std::vector{text});
}

const Target quotedTextsTarget("QuotedTexts", checkQuotedTexts);

} // namespace

} // namespace velmo::Fuzz
