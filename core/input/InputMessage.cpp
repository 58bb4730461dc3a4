#include "core/input/InputMessage.h"

#include "core/support/Decimal.h"
#include "core/support/Json.h"
#include "core/support/NameTable.h"
#include "core/support/Record.h"
#include "core/support/Text.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace velmo {

namespace {

using Decoded = std::optional<InputMessage>;

constexpr std::int64_t maxMotion = 2048;
constexpr std::int64_t maxZoomSteps = 8;
constexpr std::size_t maxText = 1024;                     // UTF-16 units
constexpr std::int64_t maxTarget = 9'999'999'999'999'999; // sixteen digits

constexpr auto memberNames = std::to_array<std::string_view>(
    {"type", "dx", "dy", "steps", "button", "down", "text", "target", "key"});
constexpr NameTable memberTable(memberNames);

/// The positions of the names in the table.
enum Member : std::uint8_t { type, dx, dy, steps, button, down, text, target, key };

/// A line of JSON, read so that every member is looked at once.
class Line {
public:
    explicit Line(std::string_view line)
        : document_(JsonDocument::parseAndFind(line, memberTable, members_)) {}

    [[nodiscard]] bool isSound() const { return document_.has_value(); }

    [[nodiscard]] const JsonPlainValue& operator[](Member name) const { return members_[name]; }

    [[nodiscard]] std::optional<JsonObject> object() const { return document_->object(); }

private:
    std::array<JsonPlainValue, memberNames.size()> members_;
    std::optional<JsonDocument> document_;
};

/// A gesture, the only message in which unknown members are refused.
struct GestureLine {
    Gesture gesture{};

    static constexpr auto fields =
        std::tuple{constant("type", "gesture"), field("gesture", &GestureLine::gesture)};
};

bool isWithin(std::int64_t limit, const JsonPlainValue& value) {
    return value.kind() == JsonKind::integer && value.integer() >= -limit
           && value.integer() <= limit;
}

bool isTarget(const JsonPlainValue& value) {
    return value.kind() == JsonKind::text && Decimal::parsePositive(value.text(), maxTarget);
}

template<class Motion>
Decoded decodeMotion(const Line& line) {
    if (!isWithin(maxMotion, line[dx]) || !isWithin(maxMotion, line[dy]))
        return std::nullopt;
    return InputMessage{Motion{.dx = line[dx].integer(), .dy = line[dy].integer()}};
}

Decoded decodeZoom(const Line& line) {
    if (!isWithin(maxZoomSteps, line[steps]) || line[steps].integer() == 0)
        return std::nullopt;
    return InputMessage{InputMessage::Zoom{.steps = line[steps].integer()}};
}

Decoded decodeButton(const Line& line) {
    // A value that is not a text reads as "", which names neither button.
    const bool isRight = line[button].text() == "right";
    if ((!isRight && line[button].text() != "left") || line[down].kind() != JsonKind::boolean)
        return std::nullopt;
    return InputMessage{InputMessage::Button{.right = isRight, .down = line[down].boolean()}};
}

Decoded decodeText(const Line& line) {
    const std::string_view typed = line[text].text();
    if (typed.empty() || Text::utf16Length(typed) > maxText || !isTarget(line[target]))
        return std::nullopt;
    return InputMessage{
        InputMessage::Text{.text = std::string(typed), .target = std::string(line[target].text())}};
}

Decoded decodeKey(const Line& line) {
    const std::string_view name = line[key].text();
    if (!Text::isOneOf(name, InputMessage::keys) || !isTarget(line[target]))
        return std::nullopt;
    return InputMessage{
        InputMessage::Key{.name = std::string(name), .target = std::string(line[target].text())}};
}

Decoded decodeGesture(const Line& line) {
    return line.object()
        .and_then([](const JsonObject& object) { return decodeRecordExactly<GestureLine>(object); })
        .transform([](const GestureLine& found) { return InputMessage{found.gesture}; });
}

template<class Message>
Decoded decodeBare(const Line& /*line*/) {
    return InputMessage{Message()};
}

struct Type {
    std::string_view name;
    Decoded (*decode)(const Line& line);
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

constexpr auto typeNames = [] {
    std::array<std::string_view, std::size(types)> names;
    std::ranges::transform(types, names.begin(), &Type::name);
    return names;
}();
constexpr NameTable typeTable(typeNames);

} // namespace

std::optional<InputMessage> InputMessage::decode(std::string_view line) {
    if (line.size() > maxLine)
        return std::nullopt;
    const Line read(line);
    const std::size_t known = read.isSound() ? typeTable.find(read[type].text()) : std::size(types);
    return known < std::size(types) ? types[known].decode(read) : std::nullopt;
}

} // namespace velmo
