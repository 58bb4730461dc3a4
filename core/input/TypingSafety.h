#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

/// Decides whether it is safe to type into the element that has the keyboard focus: never into a
/// password field, and never without knowing what the element is.
namespace velmo::TypingSafety {

enum class Verdict { allowed, passwordField, unknownFocus };
using enum Verdict;

/// What the platform's accessibility service tells of the focused element.
struct Focus {
    std::string role;
    std::string subrole;        ///< may be empty
    bool caretSettable = false; ///< its insertion point can be moved, so it is a text

    bool operator==(const Focus&) const = default;
};

/// The roles of elements with text that can be edited.
inline constexpr auto textRoles =
    std::to_array<std::string_view>({"AXTextField", "AXTextArea", "AXComboBox", "AXSearchField"});

/// Returns `passwordField` if the focus is a secure field, and, whatever has the focus, while
/// secure input is on, which means that some application protects what is typed. Returns
/// `unknownFocus` if the focus could not be read (absent) or is not an editable text. Only
/// `allowed` permits typing.
Verdict decide(bool secureInput, const std::optional<Focus>& focus);

/// What the phone is told of the focus.
struct Flags {
    bool editable = false;
    bool password = false;

    bool operator==(const Flags&) const = default;
};

/// Returns the same facts for the phone to show. The flags do not permit typing: under secure input
/// every focus that could be read counts as editable, even a button.
Flags focusFlags(bool secureInput, const std::optional<Focus>& focus);

} // namespace velmo::TypingSafety
