#include "core/input/TextChunks.h"

#include "core/support/Characters.h"
#include "core/support/Text.h"

namespace velmo::TextChunks {

namespace {

/// Tells whether the first chunk is `limit` ASCII bytes, as in most texts, so that no character
/// boundaries need to be looked up. The byte after them is looked at too: if it is not ASCII, it
/// may begin a combining character, which belongs to the last letter. Between ASCII bytes, CR LF is
/// the only pair that is one character.
bool beginsWithAWholeAsciiChunk(std::string_view text) {
    return text.size() > limit && Text::isAscii(text.substr(0, limit + 1))
           && text[limit - 1] != '\r';
}

} // namespace

std::vector<std::string> split(std::string_view text) {
    const std::string repaired = Text::isValidUtf8(text) ? "" : Text::repaired(text);
    std::string_view rest = repaired.empty() ? text : repaired; // begins with the next chunk
    std::vector<std::string> chunks;
    chunks.reserve(rest.size() / limit + 1);
    while (!rest.empty()) {
        while (beginsWithAWholeAsciiChunk(rest)) {
            chunks.emplace_back(rest.substr(0, limit));
            rest.remove_prefix(limit);
        }
        std::size_t bytes = 0; // of the chunk
        std::size_t units = 0; // of the chunk, UTF-16
        for (Text::Characters characters(rest); !characters.atEnd(); characters.next()) {
            const Text::Character& next = characters.current();
            if (bytes > 0 && units + next.utf16Length > limit) {
                chunks.emplace_back(rest.substr(0, bytes));
                rest.remove_prefix(bytes);
                bytes = 0;
                units = 0;
                if (beginsWithAWholeAsciiChunk(rest))
                    break;
            }
            bytes += next.bytes.size();
            units += next.utf16Length;
        }
        if (bytes > 0) {
            chunks.emplace_back(rest.substr(0, bytes));
            rest = {};
        }
    }
    return chunks;
}

} // namespace velmo::TextChunks
