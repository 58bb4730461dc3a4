#include "core/input/TypeTextRequest.h"

#include "core/support/Text.h"

#include <algorithm>

namespace velmo {

namespace {

constexpr std::size_t longestJson = 8192; // bytes
constexpr std::size_t longestText = 500;  // UTF-16 units

/// A test of bytes is enough: none of a longer UTF-8 sequence is below 128.
bool isForbidden(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20 && c != '\t' && c != '\n' && c != '\r') || byte == 0x7F;
}

} // namespace

std::optional<TypeTextRequest> TypeTextRequest::parse(std::string_view json) {
    if (json.size() > longestJson)
        return std::nullopt;
    const auto document = JsonDocument::parse(json);
    const auto object = document.and_then(&JsonDocument::object);
    if (!object || !object->hasOnly({"text", "enter"}))
        return std::nullopt;
    const auto text = object->member("text").and_then(&JsonValue::text);
    const auto given = object->member("enter");
    const auto enter = given ? given->boolean() : false;
    if (!text || text->empty() || Text::utf16Length(*text) > longestText
        || std::ranges::any_of(*text, isForbidden) || !enter)
        return std::nullopt;
    return TypeTextRequest{.text = std::string(*text), .enter = *enter};
}

} // namespace velmo
