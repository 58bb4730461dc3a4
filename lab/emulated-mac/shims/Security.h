#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Code signatures: which identity a process has, and whether the identity satisfies a requirement.
namespace velmo {

/// What a signature tells about a process. EMULATED_TEAM and EMULATED_IDENTIFIER stand for the
/// signature; without a team the process is signed ad hoc.
struct Identity {
    std::string team;
    std::string identifier;
};

Identity ownIdentity();

/// Returns whether the identity satisfies the requirement; absent if the requirement is malformed.
/// The part of the language ("Code Signing Requirement Language", the open requirements.grammar)
/// that is known here: `and`, `or`, `!`, brackets, `anchor apple generic`, `identifier TEXT` and
/// `certificate leaf[subject.OU] = TEXT`.
std::optional<bool> satisfies(std::string_view requirement, const Identity& identity);

} // namespace velmo
