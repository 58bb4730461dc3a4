#include "core/support/JsonOutline.h"

#include "core/support/JsonLiteral.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

namespace velmo {

namespace {

/// Short enough for the parser that a thread keeps.
constexpr std::size_t pieceLength = 16000;
constexpr std::string_view blanks = " \n\r\t";

/// Whether the text goes on with what may not be parted from what stands before it: the rest of a
/// UTF-8 sequence, or the second half of a surrogate pair.
bool continues(std::string_view spelling) {
    const auto first = static_cast<unsigned char>(spelling.front());
    if (first >= 0x80 && first < 0xC0)
        return true;
    constexpr std::string_view second = "cdefCDEF";
    return spelling.size() > 3 && (spelling.starts_with("\\ud") || spelling.starts_with("\\uD"))
           && second.contains(spelling[3]);
}

std::string_view firstPiece(std::string_view spelling) {
    const std::string_view window = spelling.substr(0, pieceLength);
    std::size_t end = 0;
    while (end < window.size()) {
        if (spelling[end] == '\\')
            end += spelling.substr(end).starts_with("\\u") ? 6 : 2;
        else
            end = std::min(window.find('\\', end), window.size());
    }
    while (end < spelling.size() && continues(spelling.substr(end)))
        end += spelling[end] == '\\' ? 6 : 1;
    return spelling.substr(0, end);
}

/// Whether every byte is ASCII and no control character, eight at a time.
bool isPrintable(std::string_view text) {
    using Word = std::uint64_t;
    constexpr Word eachByte = 0x0101010101010101;
    constexpr Word highBits = eachByte * 0x80;
    const auto faultsOf = [](Word word) { return (word | (word - eachByte * 0x20)) & highBits; };
    Word faults = 0;
    for (; text.size() >= sizeof(Word); text.remove_prefix(sizeof(Word))) {
        Word word = 0;
        std::memcpy(&word, text.data(), sizeof word);
        faults |= faultsOf(word);
    }
    Word last = eachByte * ' ';
    std::memcpy(&last, text.data(), text.size());
    faults |= faultsOf(last);
    return faults == 0;
}

} // namespace

bool JsonLongText::read(const Sink& sink) const {
    for (std::string_view rest = spelling_; !rest.empty();) {
        const std::string_view piece = firstPiece(rest);
        rest.remove_prefix(piece.size());
        if (!piece.contains('\\') && isPrintable(piece)) {
            if (!sink(piece))
                return false;
            continue;
        }
        const auto document = JsonDocument::parse('"' + std::string(piece) + '"');
        const auto text = document ? document->root().text() : std::nullopt;
        if (!text || !sink(*text))
            return false;
    }
    return true;
}

std::optional<JsonOutline> JsonOutline::parse(std::string_view json,
                                              std::initializer_list<std::string_view> names) {
    // Quotes and brackets mean the same in every text that may yet turn out to be JSON; whether it
    // is one is judged afterwards.
    LongTexts longTexts;
    std::string outline;
    std::size_t copied = 0;
    std::int64_t depth = 0;
    std::string_view literal;
    bool behindColon = false;
    for (std::size_t position = 0; position < json.size(); ++position) {
        const char c = json[position];
        if (c == '"') {
            const auto end = endOfLiteral(json, position);
            if (!end)
                return std::nullopt;
            const std::string_view name = literal;
            literal = json.substr(position + 1, *end - position - 2);
            if (behindColon && depth == 1 && literal.size() > maxInline
                && std::ranges::find(names, name) != names.end()) {
                outline += json.substr(copied, position + 1 - copied);
                copied = *end - 1;
                longTexts.emplace(name, literal);
            }
            position = *end - 1;
        }
        if (!blanks.contains(c))
            behindColon = c == ':';
        depth += c == '{' || c == '[' ? 1 : 0;
        depth -= c == '}' || c == ']' ? 1 : 0;
    }
    if (!longTexts.empty())
        json = outline += json.substr(copied);
    auto document = JsonDocument::parse(json);
    if (!document || !document->object())
        return std::nullopt;
    return JsonOutline(*std::move(document), std::move(longTexts));
}

std::optional<JsonLongText> JsonOutline::longText(std::string_view name) const {
    const auto found = longTexts_.find(name);
    return found == longTexts_.end() ? std::nullopt : std::optional(found->second);
}

} // namespace velmo
