#include "core/input/TypingSafety.h"

#include "core/support/Text.h"

namespace velmo::TypingSafety {

namespace {

constexpr std::string_view secureField = "AXSecureTextField";

bool isSecureField(const Focus& focus) {
    return focus.role == secureField || focus.subrole == secureField;
}

bool isEditable(const Focus& focus) {
    return Text::isOneOf(focus.role, textRoles) || focus.caretSettable;
}

} // namespace

Verdict decide(bool secureInput, const std::optional<Focus>& focus) {
    if (secureInput)
        return passwordField;
    if (!focus)
        return unknownFocus;
    if (isSecureField(*focus))
        return passwordField;
    return isEditable(*focus) ? allowed : unknownFocus;
}

Flags focusFlags(bool secureInput, const std::optional<Focus>& focus) {
    if (secureInput)
        return {.editable = focus.has_value(), .password = true};
    if (!focus)
        return {};
    const bool password = isSecureField(*focus);
    return {.editable = password || isEditable(*focus), .password = password};
}

} // namespace velmo::TypingSafety
