#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The names under which the power daemon and its files are known, and the code-signing
/// requirements by which it and its clients recognise each other.
namespace velmo {

/// The name of the Mach service, and the label of the launchd job.
inline constexpr std::string_view powerDaemonMachService = "io.velmo.host.power";

/// The file name of the launchd property list.
inline constexpr std::string_view powerDaemonPlistName = "io.velmo.host.power.plist";

/// The folder of what the daemon keeps on disk.
inline constexpr std::string_view powerRecordDirectory = "/var/db/velmo";

/// The file name of the record of a hold in force.
inline constexpr std::string_view powerRecordName = "power-daemon.json";

/// Returns the code-signing requirement for a client of the daemon: it is signed by the given team,
/// under Apple's anchor, as the host application or its helper. Absent unless the
/// team is a team identifier: 1 to 16 letters and digits.
std::optional<std::string> powerClientRequirement(const std::optional<std::string>& team);

/// Returns the code-signing requirement for the daemon, which clients demand; absent likewise.
std::optional<std::string> powerDaemonRequirement(const std::optional<std::string>& team);

} // namespace velmo
