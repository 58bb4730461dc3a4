#include "fuzz/Fuzz.h"
#include "fuzz/LongTexts.h"

namespace velmo::Fuzz {

namespace {

/// Returns the member's text as the outline gives it; absent if a long text is not valid JSON.
std::optional<std::string> whole(const JsonOutline& outline, std::string_view name) {
    const auto left = outline.longText(name);
    std::string text(outline.object().member(name).and_then(&JsonValue::text).value_or(""));
    const auto append = [&](std::string_view piece) {
        text += piece;
        return true;
    };
    if (left && (!left->read(append) || text.size() > left->spelledLength()))
        return std::nullopt;
    return text;
}

/// An outline accepts exactly the objects that a document accepts, and finds the same texts in
/// them.
void checkJsonOutlines(Input input) {
    const std::string json = lengthened(input.rest());
    const auto document = JsonDocument::parse(json);
    const auto object = document.and_then(&JsonDocument::object);
    const auto outline = JsonOutline::parse(json, {"text", "png"});
    const auto text = outline ? whole(*outline, "text") : std::nullopt;
    const auto png = outline ? whole(*outline, "png") : std::nullopt;
    require(object.has_value() == (text && png));
    if (!object)
        return;
    require(outline->object().members().size() == object->members().size());
    require(object->member("text").and_then(&JsonValue::text).value_or("") == text);
    require(object->member("png").and_then(&JsonValue::text).value_or("") == png);
}

const Target jsonOutlinesTarget("JsonOutlines", checkJsonOutlines);

} // namespace

} // namespace velmo::Fuzz
