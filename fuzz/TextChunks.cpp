#include "core/input/TextChunks.h"

#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

void checkTextChunks(Input input) {
    const std::string text = Text::repaired(input.rest());
    std::string joined;
    std::size_t room = 0; // left in the chunk before, UTF-16 units
    for (const std::string& chunk : TextChunks::split(text)) {
        const std::size_t length = Text::utf16Length(chunk);
        require(!chunk.empty() && Text::firstCharacter(chunk).utf16Length > room);
        require(length <= TextChunks::limit || Text::characterCount(chunk) == 1);
        room = TextChunks::limit - std::min(length, TextChunks::limit);
        joined += chunk;
    }
    require(joined == text);
}

const Target textChunksTarget("TextChunks", checkTextChunks);

} // namespace

} // namespace velmo::Fuzz
