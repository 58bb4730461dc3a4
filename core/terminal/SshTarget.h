#pragma once

#include <optional>
#include <string_view>

/// What ssh may be told to connect to. The launcher and the spawn policy have a rule each, of the
/// same name: "-h" is a target for the launcher alone, "[::1]" for the spawn policy alone. Both
/// stand behind "--" on the command line.
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
