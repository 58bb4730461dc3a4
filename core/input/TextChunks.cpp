#include "core/input/TextChunks.h"

#include "core/support/Text.h"

#include <utility>

namespace velmo::TextChunks {

std::vector<std::string> split(std::string_view text) {
    const std::string valid = Text::repaired(text);
    std::vector<std::string> chunks;
    std::string chunk;
    std::size_t units = 0;
    for (std::string_view rest = valid; !rest.empty();) {
        const std::string_view character = Text::firstCharacter(rest);
        const std::size_t length = Text::utf16Length(character);
        if (!chunk.empty() && units + length > limit) {
            chunks.push_back(std::exchange(chunk, {}));
            units = 0;
        }
        chunk += character;
        units += length;
        rest.remove_prefix(character.size());
    }
    if (!chunk.empty())
        chunks.push_back(std::move(chunk));
    return chunks;
}

} // namespace velmo::TextChunks
