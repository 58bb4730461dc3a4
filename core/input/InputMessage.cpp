#include "core/input/InputMessage.h"

#include "core/support/Ascii.h"
#include "core/support/Json.h"
#include "core/support/Text.h"

namespace velmo {

namespace {

using Decoded = std::optional<InputMessage>;

constexpr std::int64_t farthestMove = 2048;
constexpr std::int64_t mostZoomSteps = 8;
constexpr std::size_t longestText = 1024; // UTF-16 units
constexpr std::size_t longestTarget = 16; // digits

std::optional<std::int64_t> integerWithin(const JsonObject& message, std::string_view name,
                                          std::int64_t limit) {
    const auto value = message.member(name).and_then(&JsonValue::integer);
    if (value && *value >= -limit && *value <= limit)
        return value;
    return std::nullopt;
}

std::optional<std::string_view> textMember(const JsonObject& message, std::string_view name) {
    return message.member(name).and_then(&JsonValue::text);
}

std::optional<std::string> target(const JsonObject& message) {
    const auto text = textMember(message, "target");
    if (!text || !Ascii::positiveDecimal(*text, longestTarget))
        return std::nullopt;
    return std::string(*text);
}

template<class Motion>
Decoded decodeMotion(const JsonObject& message) {
    const auto dx = integerWithin(message, "dx", farthestMove);
    const auto dy = integerWithin(message, "dy", farthestMove);
    if (!dx || !dy)
        return std::nullopt;
    return InputMessage{Motion{.dx = *dx, .dy = *dy}};
}

Decoded decodeZoom(const JsonObject& message) {
    const auto steps = integerWithin(message, "steps", mostZoomSteps);
    if (!steps || *steps == 0)
        return std::nullopt;
    return InputMessage{InputMessage::Zoom{.steps = *steps}};
}

Decoded decodeButton(const JsonObject& message) {
    const auto button = textMember(message, "button");
    const auto down = message.member("down").and_then(&JsonValue::boolean);
    if ((button != "left" && button != "right") || !down)
        return std::nullopt;
    return InputMessage{InputMessage::Button{.right = button == "right", .down = *down}};
}

Decoded decodeText(const JsonObject& message) {
    const auto text = textMember(message, "text");
    auto to = target(message);
    if (!text || text->empty() || Text::utf16Length(*text) > longestText || !to)
        return std::nullopt;
    return InputMessage{InputMessage::Text{.text = std::string(*text), .target = *std::move(to)}};
}

Decoded decodeKey(const JsonObject& message) {
    const auto name = textMember(message, "key");
    auto to = target(message);
    if (!name || !Text::isOneOf(*name, InputMessage::keys) || !to)
        return std::nullopt;
    return InputMessage{InputMessage::Key{.name = std::string(*name), .target = *std::move(to)}};
}

Decoded decodeGesture(const JsonObject& message) {
    if (!message.hasOnly({"type", "gesture"}))
        return std::nullopt;
    const auto gesture = textMember(message, "gesture").and_then(fromRawText<Gesture>);
    return gesture.transform([](Gesture known) { return InputMessage{known}; });
}

template<class Message>
Decoded decodeBare(const JsonObject& /*message*/) {
    return InputMessage{Message()};
}

struct Type {
    std::string_view name;
    Decoded (*decode)(const JsonObject& message);
};

constexpr Type types[] = {
    {.name = "move", .decode = decodeMotion<InputMessage::Move>},
    {.name = "scroll", .decode = decodeMotion<InputMessage::Scroll>},
    {.name = "zoom", .decode = decodeZoom},
    {.name = "button", .decode = decodeButton},
    {.name = "text", .decode = decodeText},
    {.name = "key", .decode = decodeKey},
    {.name = "gesture", .decode = decodeGesture},
    {.name = "ping", .decode = decodeBare<InputMessage::Ping>},
    {.name = "release", .decode = decodeBare<InputMessage::Release>},
    {.name = "focus", .decode = decodeBare<InputMessage::Focus>},
};

} // namespace

std::optional<InputMessage> InputMessage::decode(std::string_view line) {
    if (line.size() > maxLine)
        return std::nullopt;
    const auto document = JsonDocument::parse(line);
    const auto message = document.and_then(&JsonDocument::object);
    const auto name = message ? textMember(*message, "type") : std::nullopt;
    for (const Type& type : types) {
        if (type.name == name)
            return type.decode(*message);
    }
    return std::nullopt;
}

} // namespace velmo
