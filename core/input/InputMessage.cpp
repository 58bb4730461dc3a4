#include "core/input/InputMessage.h"

#include "core/support/Decimal.h"
#include "core/support/Record.h"
#include "core/support/Text.h"

namespace velmo {

namespace {

using Decoded = std::optional<InputMessage>;

constexpr std::int64_t maxMotion = 2048;
constexpr std::int64_t maxZoomSteps = 8;
constexpr std::size_t maxText = 1024;                     // UTF-16 units
constexpr std::int64_t maxTarget = 9'999'999'999'999'999; // sixteen digits

/// The one message that may have no other member.
struct GestureLine {
    Gesture gesture{};

    static constexpr auto fields =
        std::tuple{constant("type", "gesture"), field("gesture", &GestureLine::gesture)};
};

std::optional<std::int64_t> integerWithin(const JsonObject& message, std::string_view name,
                                          std::int64_t limit) {
    const auto value = message.integer(name);
    if (value && *value >= -limit && *value <= limit)
        return value;
    return std::nullopt;
}

std::optional<std::string> target(const JsonObject& message) {
    const auto text = message.text("target");
    if (!text || !Decimal::parsePositive(*text, maxTarget))
        return std::nullopt;
    return std::string(*text);
}

template<class Motion>
Decoded decodeMotion(const JsonObject& message) {
    const auto dx = integerWithin(message, "dx", maxMotion);
    const auto dy = integerWithin(message, "dy", maxMotion);
    if (!dx || !dy)
        return std::nullopt;
    return InputMessage{Motion{.dx = *dx, .dy = *dy}};
}

Decoded decodeZoom(const JsonObject& message) {
    const auto steps = integerWithin(message, "steps", maxZoomSteps);
    if (!steps || *steps == 0)
        return std::nullopt;
    return InputMessage{InputMessage::Zoom{.steps = *steps}};
}

Decoded decodeButton(const JsonObject& message) {
    const auto button = message.text("button");
    const auto down = message.boolean("down");
    if ((button != "left" && button != "right") || !down)
        return std::nullopt;
    return InputMessage{InputMessage::Button{.right = button == "right", .down = *down}};
}

Decoded decodeText(const JsonObject& message) {
    const auto text = message.text("text");
    auto to = target(message);
    if (!text || text->empty() || Text::utf16Length(*text) > maxText || !to)
        return std::nullopt;
    return InputMessage{InputMessage::Text{.text = std::string(*text), .target = *std::move(to)}};
}

Decoded decodeKey(const JsonObject& message) {
    const auto name = message.text("key");
    auto to = target(message);
    if (!name || !Text::isOneOf(*name, InputMessage::keys) || !to)
        return std::nullopt;
    return InputMessage{InputMessage::Key{.name = std::string(*name), .target = *std::move(to)}};
}

Decoded decodeGesture(const JsonObject& message) {
    return decodeRecordExactly<GestureLine>(message).transform(
        [](const GestureLine& line) { return InputMessage{line.gesture}; });
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
    const auto name = message ? message->text("type") : std::nullopt;
    for (const Type& type : types) {
        if (type.name == name)
            return type.decode(*message);
    }
    return std::nullopt;
}

} // namespace velmo
