#include "core/input/TypeTextRequest.h"

#include "core/support/Text.h"

#include <algorithm>

namespace velmo {

namespace {

constexpr std::size_t maxTypeTextJson = 8192; // bytes
constexpr std::size_t maxTypeText = 500;      // UTF-16 units

/// Looking at bytes is enough: in UTF-8, a byte below 128 is always a character of its own.
bool isForbidden(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20 && c != '\t' && c != '\n' && c != '\r') || byte == 0x7F;
}

} // namespace

std::optional<TypeTextRequest> TypeTextRequest::parse(std::string_view json) {
    auto request = decodeRecordExactly<TypeTextRequest>(json, maxTypeTextJson);
    if (!request || request->text.empty() || Text::utf16Length(request->text) > maxTypeText
        || std::ranges::any_of(request->text, isForbidden))
        return std::nullopt;
    return request;
}

std::vector<TypeTextRequest> TypeTextRequest::ofText(std::string_view text) {
    std::string typed = Text::repaired(text);
    std::erase_if(typed, isForbidden);

    std::vector<TypeTextRequest> requests;
    std::size_t units = maxTypeText; // of the last request, UTF-16
    const auto append = [&](std::string_view piece, std::size_t pieceUnits) {
        if (units + pieceUnits > maxTypeText) {
            requests.emplace_back();
            units = 0;
        }
        requests.back().text += piece;
        units += pieceUnits;
    };
    for (std::string_view rest = typed; !rest.empty();) {
        const Text::Character next = Text::firstCharacter(rest);
        rest.remove_prefix(next.bytes.size());
        if (next.utf16Length <= maxTypeText) {
            append(next.bytes, next.utf16Length);
            continue;
        }
        for (const Text::Scalar& scalar : Text::Scalars(next.bytes))
            append(scalar.bytes, Text::utf16Length(scalar.bytes));
    }
    return requests;
}

} // namespace velmo
