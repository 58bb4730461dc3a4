#pragma once

#include "core/terminal/AgentTools.h"
#include "core/terminal/SshTarget.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The grammar of the command lines that a session may run: the rules that look at the words alone,
/// before the disk is asked. Words are compared exactly and measured in bytes.
namespace velmo::Pty {

using Words = std::span<const std::string>;

inline constexpr auto agents = agentTools;

/// The programs besides shells: the agents and ssh.
inline constexpr auto tools = [] {
    std::array<std::string_view, agents.size() + 1> all{};
    std::ranges::copy(agents, all.begin());
    all.back() = "ssh";
    return all;
}();

inline constexpr auto shells =
    std::to_array<std::string_view>({"bash", "zsh", "fish", "sh", "dash", "ksh", "tcsh", "tmux"});
inline constexpr auto interpreterNames = std::to_array<std::string_view>(
    {"sh",   "bash", "zsh",     "fish",   "dash",       "ksh", "mksh",      "ash",    "tcsh",
     "csh",  "nu",   "busybox", "pwsh",   "powershell", "cmd", "osascript", "python", "perl",
     "ruby", "env",  "node",    "nodejs", "deno",       "bun", "php",       "lua",    "tclsh"});

inline constexpr std::size_t maxArguments = 64;        ///< not counting the program
inline constexpr std::size_t maxArgumentLength = 4096; ///< bytes
inline constexpr std::size_t maxAgentFlagWords = 12;   ///< more than any agent has flags for

enum class FlagValue { none, model, listed };

/// What a flag does to the questions that an agent asks before it acts.
enum class Questions { untouched, skipped, chosen };

/// A flag that an agent may be given, and the value that follows it.
struct AgentOption {
    std::string_view agent;
    std::string_view flag;
    FlagValue value = FlagValue::none;
    std::array<std::string_view, 4> list{}; ///< for `listed`; padded with ""
    Questions questions = Questions::untouched;
};

inline constexpr auto agentOptions = std::to_array<AgentOption>({
    {.agent = "claude", .flag = "--model", .value = FlagValue::model},
    {.agent = "claude",
     .flag = "--permission-mode",
     .value = FlagValue::listed,
     .list = {"plan", "acceptEdits", "default"},
     .questions = Questions::chosen},
    {.agent = "claude", .flag = "--continue"},
    {.agent = "claude", .flag = "--dangerously-skip-permissions", .questions = Questions::skipped},
    {.agent = "codex", .flag = "--model", .value = FlagValue::model},
    {.agent = "codex",
     .flag = "--sandbox",
     .value = FlagValue::listed,
     .list = {"read-only", "workspace-write"},
     .questions = Questions::chosen},
    {.agent = "codex",
     .flag = "--ask-for-approval",
     .value = FlagValue::listed,
     .list = {"untrusted", "on-failure", "on-request", "never"},
     .questions = Questions::chosen},
    {.agent = "codex",
     .flag = "--dangerously-bypass-approvals-and-sandbox",
     .questions = Questions::skipped},
    {.agent = "opencode", .flag = "--model", .value = FlagValue::model},
});

/// Tells whether `PathText::isCleanAbsolute` accepts the path.
bool isCleanAbsolutePath(std::string_view path);

/// Reads a number of columns or rows, 1 to 4 digits without a leading zero. `PtyFrame::validSize`
/// judges the limits of a terminal's size.
std::optional<int> dimension(std::optional<std::string_view> text);

/// Tells whether there is one argument: "-l", for a login shell, or for tmux "attach-session" or
/// "new-session".
bool isShellArguments(std::string_view tool, Words arguments);

/// Tells whether the arguments are "--" and a target, perhaps after "-p" and a port. Any other
/// option, and a remote command, is refused.
bool isSshArguments(Words arguments);

/// Tells whether the arguments are flags that the agent may be given, or name one of the agent's
/// own sessions to resume. The two can't be combined.
bool isAgentArguments(std::string_view tool, Words arguments);

/// Tells whether the arguments are flags of the agent, each given once and with its value. A flag
/// that skips the agent's questions can't be combined with one that chooses which it asks.
bool isAgentFlags(std::string_view tool, Words arguments);

/// Tells whether the text is an ASCII letter or digit, and then at most 99 more of these or of the
/// characters `._:/@[]-`.
bool isModelId(std::string_view text);

/// Tells whether the text is 32 hexadecimal digits, of either case, in groups of 8-4-4-4-12.
bool isUuid(std::string_view text);

/// Tells whether the text is "ses_" and 8 to 64 ASCII letters and digits.
bool isOpencodeSessionId(std::string_view text);

/// Tells whether a program of this file name is an interpreter, which runs any text that it is
/// given: the name is in `interpreterNames`, in any letter case, perhaps with a version
/// ("python3.12", "node-18") and perhaps with ".exe".
bool isInterpreter(std::string_view name);

} // namespace velmo::Pty
