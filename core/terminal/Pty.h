#pragma once

#include "core/terminal/PtyWords.h"
#include "core/terminal/SpawnRequest.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// The gatekeeper of pseudo-terminal sessions: which program may be started for whom, where and
/// with which arguments, and with what environment.
namespace velmo::Pty {

inline constexpr auto shellDirs =
    std::to_array<std::string_view>({"/opt/homebrew/bin", "/usr/local/bin", "/bin", "/usr/bin"});
inline constexpr auto shellCellars =
    std::to_array<std::string_view>({"/opt/homebrew/Cellar/", "/usr/local/Cellar/"});
inline constexpr auto systemSsh = std::to_array<std::string_view>(
    {"/usr/bin/ssh", "/opt/homebrew/bin/ssh", "/usr/local/bin/ssh"});
inline constexpr auto sshCellars = std::to_array<std::string_view>(
    {"/opt/homebrew/Cellar/openssh/", "/usr/local/Cellar/openssh/"});

/// Anybody may put a program there.
inline constexpr auto temporaryRoots =
    std::to_array<std::string_view>({"/tmp", "/private/tmp", "/var/tmp", "/private/var/tmp",
                                     "/var/folders", "/private/var/folders"});

/// The variables that reach the child, with those that begin with "LC_".
inline constexpr auto passed = std::to_array<std::string_view>(
    {"HOME", "USER", "LOGNAME", "SHELL", "PATH", "LANG", "SSH_AUTH_SOCK", "TMPDIR"});

/// A program of this name runs with any arguments while the requesting environment holds
/// `testEnvironmentKey` with the value "1". Where it lies and where it works is judged as ever.
inline constexpr std::string_view testFixture = "velmo-pty-fixture";
inline constexpr std::string_view testEnvironmentKey = "VELMO_PTY_TEST";

using Environment = std::map<std::string, std::string, std::less<>>;

/// Every question that the policy has about the disk. The real answers: platform/host.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    /// Absolute, every link resolved; absent when the path, such as "", leads nowhere.
    [[nodiscard]] virtual std::optional<std::string> realpath(std::string_view path) const = 0;

    [[nodiscard]] virtual bool isDirectory(std::string_view path) const = 0;

    /// Exists, is no directory, and the caller may execute it.
    [[nodiscard]] virtual bool isExecutable(std::string_view path) const = 0;

    /// Whether others may write to what the path leads to (links followed; the sticky bit does not
    /// help). True also when it can't be examined: what is not known to be safe is not.
    [[nodiscard]] virtual bool isWorldWritable(std::string_view path) const = 0;

    /// The value of "HOME", even if it is empty; without that key the platform's home folder of
    /// the current user.
    [[nodiscard]] virtual std::optional<std::string> home(const Environment& environment) const = 0;
};

/// `words` are "--cwd", "--cols" and "--rows", each with its value, perhaps "--origin" "cli", in
/// any order; "--"; the program's path; its arguments:
///
///     --cwd /Users/me/dev/app --cols 80 --rows 24 -- /opt/homebrew/bin/claude --continue
///
/// Absent when any rule is broken. The file system is asked only about words that passed every
/// rule on words. Origin "cli", for claude alone, lifts the grammar of its arguments and no other
/// rule.
std::optional<SpawnRequest> parseSpawn(Words words, const Environment& environment,
                                       const FileSystem& fileSystem);

/// Whether nobody else could have put the program there: neither the path as given nor the
/// resolved one lies in a temporary folder or below a folder that others may write to.
bool isTrustedProgram(std::string_view given, std::string_view resolved,
                      const Environment& environment, const FileSystem& fs);

/// All that the child gets of the requesting environment, and what it always gets. Entries that
/// could smuggle in another (a key with "=", NUL anywhere) are dropped.
Environment childEnvironment(const Environment& environment);

/// The exit code for a status from waitpid: the program's own, 128 + the signal that killed it, or
/// 1 for a program that was only stopped.
std::int32_t exitCode(std::int32_t status);

} // namespace velmo::Pty
