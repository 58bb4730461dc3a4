#pragma once

#include "core/terminal/PtyWords.h"
#include "core/terminal/SpawnRequest.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// The gatekeeper of pseudo-terminal sessions: which program may be started, in which folder, with
/// which arguments and with what environment.
namespace velmo::Pty {

inline constexpr auto shellDirs =
    std::to_array<std::string_view>({"/opt/homebrew/bin", "/usr/local/bin", "/bin", "/usr/bin"});
inline constexpr auto shellCellars =
    std::to_array<std::string_view>({"/opt/homebrew/Cellar/", "/usr/local/Cellar/"});
inline constexpr auto systemSsh = std::to_array<std::string_view>(
    {"/usr/bin/ssh", "/opt/homebrew/bin/ssh", "/usr/local/bin/ssh"});
inline constexpr auto sshCellars = std::to_array<std::string_view>(
    {"/opt/homebrew/Cellar/openssh/", "/usr/local/Cellar/openssh/"});

/// Folders in which every user may put a program.
inline constexpr auto temporaryRoots =
    std::to_array<std::string_view>({"/tmp", "/private/tmp", "/var/tmp", "/private/var/tmp",
                                     "/var/folders", "/private/var/folders"});

/// The variables that reach the child, besides those that begin with "LC_".
inline constexpr auto passed = std::to_array<std::string_view>(
    {"HOME", "USER", "LOGNAME", "SHELL", "PATH", "LANG", "SSH_AUTH_SOCK", "TMPDIR"});

/// A program of this name may run with any arguments if `testEnvironmentKey` is "1" in the
/// requesting environment. The rules on its path and its working folder apply all the same.
inline constexpr std::string_view testFixture = "velmo-pty-fixture";
inline constexpr std::string_view testEnvironmentKey = "VELMO_PTY_TEST";

using Environment = std::map<std::string, std::string, std::less<>>;

/// Everything that the policy asks about the disk. platform/host has the real implementation.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    /// Returns the absolute path with every link resolved, or nothing if the path, such as "",
    /// leads nowhere.
    [[nodiscard]] virtual std::optional<std::string> realpath(std::string_view path) const = 0;

    [[nodiscard]] virtual bool isDirectory(std::string_view path) const = 0;

    /// Tells whether the path leads to a file that the caller may execute, and not to a folder.
    [[nodiscard]] virtual bool isExecutable(std::string_view path) const = 0;

    /// Tells whether every user may write to the file or folder that the path leads to, with the
    /// sticky bit or without. A path that can't be examined counts as writable.
    [[nodiscard]] virtual bool isWorldWritable(std::string_view path) const = 0;

    /// Returns the value of "HOME", even an empty one, or else the platform's home folder of the
    /// current user.
    [[nodiscard]] virtual std::optional<std::string> home(const Environment& environment) const = 0;
};

/// Reads the options "--cwd", "--cols", "--rows" and perhaps "--origin", in any order and each with
/// its value; then "--", the program's path and its arguments:
///
///     --cwd /Users/me/dev/app --cols 80 --rows 24 -- /opt/homebrew/bin/claude --continue
///
/// Returns nothing if any rule is broken. The file system is asked only about words that passed
/// every rule on words. The origin "cli", which only claude may have, frees its arguments from
/// `isAgentArguments` and from no other rule.
std::optional<SpawnRequest> parseSpawn(Words words, const Environment& environment,
                                       const FileSystem& fileSystem);

/// Tells whether the program is safe from other users: neither the path as given nor the resolved
/// one lies in a temporary folder or below a folder that every user may write to.
bool isTrustedProgram(std::string_view given, std::string_view resolved,
                      const Environment& environment, const FileSystem& fs);

/// Returns the child's environment: the variables of the requesting one that reach it, and those
/// that it always gets. Drops empty values, and entries that would be read as different ones: a key
/// with "=", NUL anywhere.
Environment childEnvironment(const Environment& environment);

/// Returns the exit code for a status from waitpid: the program's own, 128 plus the signal that
/// killed it, or 1 for a program that was only stopped.
std::int32_t exitCode(std::int32_t status);

} // namespace velmo::Pty
