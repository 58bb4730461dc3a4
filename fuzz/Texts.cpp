#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

void checkTexts(Input input) {
    const std::size_t count = input.byte();
    const std::string_view text = input.rest();
    const std::string repaired = Text::repaired(text);
    require(Text::isValidUtf8(repaired) && Text::isValidUtf8(text) == (repaired == text));
    require(Text::utf16Length(repaired) == Text::utf16Length(text));
    require(Text::utf16(text).size() == Text::utf16Length(text));

    const std::string_view prefix = Text::prefix(text, count);
    require(text.starts_with(prefix));
    require(Text::hasMoreCharactersThan(text, count) == (prefix.size() < text.size()));
    require(Text::characterCount(prefix) <= count || text.empty());

    for (const auto map : {Text::lowercased, Text::caseFolded, Text::composed}) {
        const std::string mapped = map(text);
        require(Text::isValidUtf8(mapped) && map(mapped) == mapped && map(repaired) == mapped);
    }

    const std::string_view trimmed = Text::trimmed(text, Text::isBlankOrNewline);
    require(text.contains(trimmed) && Text::trimmed(trimmed, Text::isBlankOrNewline) == trimmed);
    for (const std::string_view piece : Text::pieces(text, Text::isNewline)) {
        require(!piece.empty());
        for (const Text::Scalar& scalar : Text::Scalars(piece))
            require(!Text::isNewline(scalar.value));
    }
}

const Target textsTarget("Texts", checkTexts);

} // namespace

} // namespace velmo::Fuzz
