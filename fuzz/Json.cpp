#include "core/support/Json.h"

#include "core/support/Record.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>
#include <cmath>

namespace velmo::Fuzz {

namespace {

/// Of every value one reader answers, or none for null and for an integer beyond 64 bits.
// NOLINTNEXTLINE(misc-no-recursion): the reader bounds the nesting.
void requireWhole(const JsonValue& value) {
    require(!value.integer() || value.number());
    require(!value.number() || std::isfinite(*value.number()));
    require(!value.text() || Text::isValidUtf8(*value.text()));
    for (const JsonValue& element :
         value.array() ? value.array()->elements() : std::vector<JsonValue>())
        requireWhole(element);
    if (!value.object())
        return;
    std::vector<std::string_view> names;
    for (const JsonMember& member : value.object()->members()) {
        names.push_back(member.name);
        require(Text::isValidUtf8(member.name) && value.object()->member(member.name));
        requireWhole(member.value);
    }
    std::ranges::sort(names);
    require(std::ranges::adjacent_find(names) == names.end());
}

/// The reader itself, and the writer: a text written twice over is the same, members in order.
void checkJson(Input input) {
    const std::string_view text = input.rest();
    const auto written = encodeJson(text).value();
    require(decodeJsonText<std::string>(written) == Text::repaired(text));

    const auto document = JsonDocument::parse(text);
    if (!document)
        return;
    require(Text::isValidUtf8(text));
    requireWhole(document->root());
    const std::string reversed = respelt(document->root());
    const std::string once = respelt(JsonDocument::parse(reversed).value().root());
    require(respelt(JsonDocument::parse(once).value().root()) == reversed);
}

const Target jsonTarget("Json", checkJson);

} // namespace

} // namespace velmo::Fuzz
