#include "core/input/TypeTextRequest.h"

#include "core/support/Text.h"

#include <algorithm>

namespace velmo {

namespace {

constexpr std::size_t maxJson = 8192; // bytes
constexpr std::size_t maxText = 500;  // UTF-16 units

/// It is enough to look at bytes: in UTF-8, one below 128 is always a character of its own.
bool isForbidden(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20 && c != '\t' && c != '\n' && c != '\r') || byte == 0x7F;
}

} // namespace

std::optional<TypeTextRequest> TypeTextRequest::parse(std::string_view json) {
    auto request = decodeRecordExactly<TypeTextRequest>(json, maxJson);
    if (!request || request->text.empty() || Text::utf16Length(request->text) > maxText
        || std::ranges::any_of(request->text, isForbidden))
        return std::nullopt;
    return request;
}

} // namespace velmo
