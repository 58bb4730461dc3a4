#pragma once

#include "core/terminal/OpenRequest.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The texts that open a terminal window or bring a tab to the front. The caller runs them. These
/// functions quote but do not judge: pass only a request that `parseOpen` returned, or one made of
/// parts that passed the same predicates.
namespace velmo::DevTerminal {

/// Returns AppleScript source, or nothing for Ghostty, which is driven by arguments.
std::optional<std::string> openScript(const OpenRequest& request);

/// Returns the arguments of the system's application opener (/usr/bin/open) that open Ghostty.
std::vector<std::string> ghosttyArguments(const OpenRequest& request);

/// Returns the line that Terminal and iTerm2 type into a shell.
std::string shellCommand(const OpenRequest& request);

/// Returns the line that iTerm2 runs without a shell.
std::string itermCommand(const OpenRequest& request);

/// Return a script that brings the tab of the tty to the front, or nothing if `isTty` refuses the
/// text. The script returns "ok", or "missing" if no tab has that tty.
std::optional<std::string> terminalFocusScript(std::string_view tty);
std::optional<std::string> itermFocusScript(std::string_view tty);

} // namespace velmo::DevTerminal
