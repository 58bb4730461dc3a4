#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

/// Whether it is safe to type into what has the keyboard focus: never into a password field, never
/// blindly.
namespace velmo::TypingSafety {

enum class Verdict { allowed, passwordField, unknownFocus };
using enum Verdict;

/// What accessibility tells of the focused element.
struct Focus {
    std::string role;
    std::string subrole;        ///< may be empty
    bool caretSettable = false; ///< its insertion point can be moved, so that it holds text

    bool operator==(const Focus&) const = default;
};

inline constexpr auto textRoles =
    std::to_array<std::string_view>({"AXTextField", "AXTextArea", "AXComboBox", "AXSearchField"});

/// Only `allowed` lets typing proceed. Secure input (an application protects what is typed) is
/// `passwordField` whatever has the focus; so is a secure field. A focus that could not be read
/// (absent), or that does not look like text, is `unknownFocus`.
Verdict decide(bool secureInput, const std::optional<Focus>& focus);

struct Flags {
    bool editable = false;
    bool password = false;

    bool operator==(const Flags&) const = default;
};

/// The same facts for the phone to show. These are not a permission: under secure input every
/// focus that could be read counts as editable, even a button.
Flags focusFlags(bool secureInput, const std::optional<Focus>& focus);

} // namespace velmo::TypingSafety
