#include "core/support/Json.h"

#include "core/support/Record.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>
#include <cmath>

namespace velmo::Fuzz {

namespace {

/// Checks a value and everything in it: an integer is also a number, a number is finite, a text is
/// valid UTF-8, and the members of an object have distinct names and are found by them.
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

/// Checks the reader and the writer. A document that is written two more times is the same text
/// again, because every writing reverses its members.
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
