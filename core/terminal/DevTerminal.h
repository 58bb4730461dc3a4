#pragma once

#include "core/support/RawText.h"
#include "core/support/Record.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// Opens a terminal window on the Mac and runs something in it, or brings a tab to the front: the
/// text of the scripts and command lines, and the checks of what may go into them. Running them is
/// the caller's. Parsers validate, builders do not: hand them only what a parser gave, or what the
/// same predicates passed.
///
/// What has to look at the disk is in platform/host/DevTerminalHost.h.
namespace velmo::DevTerminal {

enum class App { terminal, iterm, ghostty };

inline constexpr auto allApps = std::to_array<App>({App::terminal, App::iterm, App::ghostty});

std::string_view bundleIdentifier(App app);

struct Tool {
    std::string name;

    bool operator==(const Tool&) const = default;
};

struct Ssh {
    std::string target;
    std::optional<int> port;

    bool operator==(const Ssh&) const = default;
};

/// The product's own executable, joining a running session.
struct Attach {
    std::string ticketFile;

    bool operator==(const Attach&) const = default;
};

using Command = std::variant<Tool, Ssh, Attach>;

struct OpenRequest {
    App app = App::terminal;
    std::optional<std::string> cwd; ///< of a tool
    Command command;
    bool fullscreen = false; ///< only Ghostty can be told
    bool exec = false;       ///< the tool is the window's program and not typed into a shell
    std::optional<std::string> toolPath;   ///< instead of the tool's name
    std::optional<std::string> executable; ///< the product's own, for `Attach`

    /// With `exec` set: neither has a form that is typed into a shell.
    static OpenRequest ofSsh(App app, Ssh ssh, bool fullscreen);
    static OpenRequest ofAttach(App app, Attach attach, std::string executable, bool fullscreen);

    /// The tool's name; absent when the command is none.
    [[nodiscard]] std::optional<std::string> tool() const;

    /// What will be executed: the tool's path or else its name, "ssh", or the executable, which
    /// is "" when absent.
    [[nodiscard]] std::string program() const;

    bool operator==(const OpenRequest&) const = default;
};

struct FocusRequest {
    std::int32_t pid = 0; ///< 1 or more
    std::optional<std::string> tty;

    static constexpr auto fields =
        std::tuple{field("pid", &FocusRequest::pid), field("tty", &FocusRequest::tty)};
    bool operator==(const FocusRequest&) const = default;
};

inline constexpr auto tools =
    std::to_array<std::string_view>({"claude", "codex", "opencode", "agy"});

/// No folder of these names directly below the home folder, nor anything in it.
inline constexpr auto deniedTop = std::to_array<std::string_view>(
    {"library", ".ssh", ".gnupg", ".aws", ".azure", ".kube", ".docker", ".trash", ".password-store",
     "appdata", ".config", ".local", ".cache", ".claude", ".codex", ".gemini", ".npm", ".gcloud"});

/// No folder of these names anywhere below the home folder, nor anything in it.
inline constexpr auto deniedAnywhere = std::to_array<std::string_view>(
    {".ssh", ".gnupg", ".aws", ".password-store", "keychains", ".git"});

/// An absolute path with every link resolved, as far as it exists; absent for a relative or empty
/// one and on any error on the way.
using Resolve = std::function<std::optional<std::string>(std::string_view path)>;

/// Option and value pairs; no option twice. `attachFolder` is where a ticket file must lie,
/// `executable` what is started for it.
std::optional<OpenRequest> parseOpen(std::span<const std::string> args, std::string_view home,
                                     const std::optional<std::string>& attachFolder,
                                     const std::optional<std::string>& executable,
                                     const Resolve& resolve);

/// "--pid", 1 to 2^31-1 without leading zeros, and perhaps "--tty".
std::optional<FocusRequest> parseFocus(std::span<const std::string> args);

/// AppleScript source; absent for Ghostty, which is driven by arguments.
std::optional<std::string> openScript(const OpenRequest& request);

/// For the system's application opener.
std::vector<std::string> ghosttyArguments(const OpenRequest& request);

/// The line that Terminal and iTerm2 type into a shell.
std::string shellCommand(const OpenRequest& request);

/// The line that iTerm2 runs without a shell.
std::string itermCommand(const OpenRequest& request);

/// A script that returns "ok" when it found and raised the tab, else "missing". Absent when the
/// text is no tty.
std::optional<std::string> terminalFocusScript(std::string_view tty);
std::optional<std::string> itermFocusScript(std::string_view tty);

/// One word for a POSIX shell.
std::string shellQuote(std::string_view text);

/// A string literal.
std::string appleScriptString(std::string_view text);

/// "/dev/ttys" and 1 to 4 digits.
bool isTty(std::string_view text);

/// An optional user and a host of ASCII letters, digits, ".", "_" and "-". Looser at the front and
/// narrower at the host than the spawn policy's rule of the same name.
bool isSshTarget(std::string_view text);

/// 1 to 65535, without leading zeros.
std::optional<int> sshPort(std::string_view text);

/// A clean absolute path; see PathText::isCleanAbsolute.
bool isSafePath(std::string_view path);

/// A safe path without a trailing slash, directly inside the folder, whose text is compared byte
/// for byte. An empty or absent folder holds nothing.
bool isAttachFile(std::string_view file, const std::optional<std::string>& folder);

/// Whether a session may work in the folder: strictly inside the home folder and in none of the
/// denied ones. Both paths are absolute and have their links resolved already.
bool isAllowedResolvedFolder(std::string_view path, std::string_view home);

/// The same for paths as given. One with a "." or ".." piece is refused before it is resolved.
bool isAllowedFolder(std::string_view path, std::string_view home, const Resolve& resolve);

} // namespace velmo::DevTerminal

namespace velmo {

template<>
inline constexpr auto rawTexts<DevTerminal::App> =
    std::to_array<std::string_view>({"Terminal", "iTerm2", "Ghostty"});

} // namespace velmo
