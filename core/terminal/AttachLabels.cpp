#include "core/terminal/AttachLabels.h"

#include "core/support/Text.h"

namespace velmo::PtyAttach {

namespace {

/// The Unicode property Bidi_Control.
bool isBidirectionalControl(char32_t scalar) {
    return scalar == 0x061C || scalar == 0x200E || scalar == 0x200F
           || (scalar >= 0x202A && scalar <= 0x202E) || (scalar >= 0x2066 && scalar <= 0x2069);
}

std::string sanitized(std::string_view text, std::size_t maxCharacters) {
    std::string clean;
    for (const Text::Scalar& scalar : Text::Scalars(text)) {
        if (!Text::isControl(scalar.value) && !isBidirectionalControl(scalar.value))
            Text::append(clean, scalar.value);
    }
    return std::string(Text::prefix(clean, maxCharacters));
}

} // namespace

std::string fill(std::string_view label, std::string_view code) {
    return Text::replacedAll(label, "{code}", code);
}

std::string sanitizeLabel(std::string_view text) {
    return sanitized(text, maxLabel);
}

std::string sanitizeTitle(std::string_view text) {
    return sanitized(text, maxTitle);
}

std::string titleSequence(std::string_view title) {
    return "\x1B]2;" + sanitizeTitle(title) + "\a";
}

} // namespace velmo::PtyAttach
