#pragma once

#include "core/support/Record.h"
#include "core/terminal/AgentTools.h"
#include "core/terminal/AllowedFolder.h"
#include "core/terminal/DevTerminalScripts.h"
#include "core/terminal/OpenRequest.h"
#include "core/terminal/Quoting.h"
#include "core/terminal/SshTarget.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The terminal launcher: opens a terminal window on the Mac and runs a command in it, or brings a
/// tab to the front. This header has the parsers of its arguments and the checks on them.
/// OpenRequest.h has the request, DevTerminalScripts.h the scripts and command lines made from it,
/// and platform/host/DevTerminalHost.h everything that has to look at the disk.
namespace velmo::DevTerminal {

inline constexpr auto tools = agentTools;

/// Asks to bring a tab to the front.
struct FocusRequest {
    std::int32_t pid = 0; ///< 1 or more
    std::optional<std::string> tty;

    static constexpr auto fields =
        std::tuple{field("pid", &FocusRequest::pid), field("tty", &FocusRequest::tty)};
    bool operator==(const FocusRequest&) const = default;
};

/// Reads the arguments "--app", then the options of one command, each with its value, in any order:
///
///     --app Terminal --cwd /Users/me/dev/app --tool claude --tool-path /opt/bin/claude --exec 1
///     --app iTerm2 --ssh-target me@host --ssh-port 22
///     --app Ghostty --attach-file /private/T/velmo-term/a-....json --fullscreen 1
///
/// Returns nothing if any argument breaks a rule. A ticket file must lie in `attachFolder`, and is
/// handed to `executable`, the product's own; if either is absent, every ticket is refused.
std::optional<OpenRequest> parseOpen(std::span<const std::string> args, std::string_view home,
                                     const std::optional<std::string>& attachFolder,
                                     const std::optional<std::string>& executable,
                                     const Resolve& resolve);

/// Reads "--pid", 1 to 2^31-1 without leading zeros, and perhaps "--tty".
std::optional<FocusRequest> parseFocus(std::span<const std::string> args);

/// Tells whether the text is "/dev/ttys" and 1 to 4 digits.
bool isTty(std::string_view text);

/// Tells whether the path is clean and absolute; see `PathText::isCleanAbsolute`.
bool isSafePath(std::string_view path);

/// Tells whether the file's path is safe, has no trailing slash and lies directly inside the
/// folder. The folder's path is compared byte for byte, and never matches if empty or absent.
bool isAttachFile(std::string_view file, const std::optional<std::string>& folder);

} // namespace velmo::DevTerminal
