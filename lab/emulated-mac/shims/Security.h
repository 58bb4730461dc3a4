#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Code signatures: who a process is, and whether it satisfies a requirement.
namespace velmo {

/// What a signature tells of a process. EMULATED_TEAM and EMULATED_IDENTIFIER stand for the
/// signature; without a team the process is signed ad hoc.
struct Identity {
    std::string team;
    std::string identifier;
};

Identity ownIdentity();

/// Returns whether the identity satisfies the requirement; absent if that is malformed. Of the
/// language ("Code Signing Requirement Language", the open requirements.grammar) it knows `and`,
/// `or`, `!`, brackets, `anchor apple generic`, `identifier TEXT` and
/// `certificate leaf[subject.OU] = TEXT`.
std::optional<bool> satisfies(std::string_view requirement, const Identity& identity);

} // namespace velmo
