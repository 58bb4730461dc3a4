#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The names under which the power daemon is known, and the code-signing requirements by which it
/// and its clients recognise each other.
namespace velmo {

/// Mach service and launchd label.
inline constexpr std::string_view powerDaemonMachService = "io.velmo.host.power";

/// File name of the launchd property list.
inline constexpr std::string_view powerDaemonPlistName = "io.velmo.host.power.plist";

/// What a client must satisfy: signed under Apple's anchor by the given team as the host
/// application or its helper. Absent when the team is absent or is no team identifier.
std::optional<std::string> powerClientRequirement(const std::optional<std::string>& team);

/// What the daemon must satisfy in the eyes of a client; absent likewise.
std::optional<std::string> powerDaemonRequirement(const std::optional<std::string>& team);

} // namespace velmo
