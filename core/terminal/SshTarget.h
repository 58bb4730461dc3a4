#pragma once

#include <optional>
#include <string_view>

/// The targets that ssh may be told to connect to. The launcher and the spawn policy have different
/// rules of the same name: only the launcher accepts "-h", only the spawn policy "[::1]". On the
/// command line a target always follows "--".
namespace velmo::DevTerminal {

/// Tells whether the text is a host, perhaps after a user and "@", each made of ASCII letters,
/// digits, ".", "_" and "-".
bool isSshTarget(std::string_view text);

/// Returns the port, 1 to 65535, that the text spells without leading zeros.
std::optional<int> sshPort(std::string_view text);

} // namespace velmo::DevTerminal

namespace velmo::Pty {

/// Tells whether the text is a host, perhaps after a user and "@". The host is a name or an IPv4
/// address, or an IPv6 literal in brackets. The text is at most 253 bytes long and does not begin
/// with "-".
bool isSshTarget(std::string_view text);

} // namespace velmo::Pty
