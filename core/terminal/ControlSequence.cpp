#include "core/terminal/ControlSequence.h"

#include "core/support/Decimal.h"
#include "core/support/Text.h"
#include "core/terminal/AttachLabels.h"

namespace velmo::ControlSequence {

namespace {

bool isParameter(char c) {
    return (c >= '0' && c <= '9') || c == ';' || c == ':';
}

bool isIntermediate(char c) {
    return c >= ' ' && c <= '/';
}

bool isPlain(std::string_view text) {
    for (const Text::Scalar& scalar : Text::Scalars(text)) {
        if (Text::isControl(scalar.value))
            return false;
    }
    return Text::isValidUtf8(text);
}

/// Removes the leading characters that pass the test from the text, and returns them.
template<class Test>
std::string_view taken(std::string_view& text, const Test& test) {
    const auto end = std::ranges::find_if_not(text, test);
    const std::string_view part = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(part.size());
    return part;
}

} // namespace

std::optional<Csi> Csi::parse(std::string_view text) {
    constexpr std::string_view markers = "?><=";
    Csi csi;
    if (!text.empty() && markers.contains(text.front())) {
        csi.marker = text.substr(0, 1);
        text.remove_prefix(1);
    }
    csi.parameters = taken(text, isParameter);
    csi.intermediates = taken(text, isIntermediate);
    if (text.size() != 1 || text.front() < '@' || text.front() > '~')
        return std::nullopt;
    csi.final = text.front();
    return csi;
}

Numbers Csi::numbers() const {
    Numbers all;
    std::string_view rest = parameters;
    while (all.size() < Numbers::max) {
        const std::size_t end = rest.find(';');
        all.add(Decimal::parseUnsigned<std::int32_t>(rest.substr(0, end)).value_or(0));
        if (end == std::string_view::npos)
            break;
        rest.remove_prefix(end + 1);
    }
    return all;
}

std::string_view takeField(std::string_view& text, char separator) {
    const std::size_t end = text.find(separator);
    const std::string_view field = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return field;
}

std::optional<std::string> titleOf(std::string_view osc) {
    if (!osc.starts_with("0;") && !osc.starts_with("2;"))
        return std::nullopt;
    return PtyAttach::sanitizeTitle(osc.substr(2));
}

bool isMarkOrColour(std::string_view osc) {
    constexpr auto marks = std::to_array<std::string_view>({"7", "8", "133"});
    constexpr auto colours =
        std::to_array<std::string_view>({"4", "10", "11", "12", "104", "110", "111", "112"});
    const std::string_view command = osc.substr(0, osc.find(';'));
    return isPlain(osc)
           && (Text::isOneOf(command, marks)
               || (Text::isOneOf(command, colours) && !osc.contains('?')));
}

} // namespace velmo::ControlSequence
