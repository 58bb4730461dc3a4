#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The grammar of the command lines that a session may run: what is decided on the words alone.
/// Everything is exact, case-sensitive and counted in bytes. Parsers refuse invalid UTF-8.
namespace velmo::Pty {

using Words = std::span<const std::string>;

inline constexpr auto tools =
    std::to_array<std::string_view>({"claude", "codex", "opencode", "agy", "ssh"});
inline constexpr auto agents =
    std::to_array<std::string_view>({"claude", "codex", "opencode", "agy"});
inline constexpr auto shells =
    std::to_array<std::string_view>({"bash", "zsh", "fish", "sh", "dash", "ksh", "tcsh", "tmux"});
inline constexpr auto interpreterNames = std::to_array<std::string_view>(
    {"sh",   "bash", "zsh",     "fish",   "dash",       "ksh", "mksh",      "ash",    "tcsh",
     "csh",  "nu",   "busybox", "pwsh",   "powershell", "cmd", "osascript", "python", "perl",
     "ruby", "env",  "node",    "nodejs", "deno",       "bun", "php",       "lua",    "tclsh"});

inline constexpr std::size_t maxArguments = 64;        ///< without the program
inline constexpr std::size_t maxArgumentLength = 4096; ///< bytes
inline constexpr std::size_t maxAgentFlagWords = 12;

enum class FlagValue { none, model, listed };

/// A flag that an agent may be given, and what follows it.
struct AgentOption {
    std::string_view agent;
    std::string_view flag;
    FlagValue value = FlagValue::none;
    std::array<std::string_view, 4> list{}; ///< for `listed`; padded with ""
};

/// A flag without a value, with the identifier of a model, with a value of a list.
constexpr AgentOption bare(std::string_view agent, std::string_view flag) {
    return {.agent = agent, .flag = flag};
}

constexpr AgentOption model(std::string_view agent, std::string_view flag) {
    return {.agent = agent, .flag = flag, .value = FlagValue::model};
}

constexpr AgentOption listed(std::string_view agent, std::string_view flag,
                             const std::array<std::string_view, 4>& list) {
    return {.agent = agent, .flag = flag, .value = FlagValue::listed, .list = list};
}

inline constexpr auto agentOptions = std::to_array<AgentOption>({
    model("claude", "--model"),
    listed("claude", "--permission-mode", {"plan", "acceptEdits", "default"}),
    bare("claude", "--continue"),
    bare("claude", "--dangerously-skip-permissions"),
    model("codex", "--model"),
    listed("codex", "--sandbox", {"read-only", "workspace-write"}),
    listed("codex", "--ask-for-approval", {"untrusted", "on-failure", "on-request", "never"}),
    bare("codex", "--dangerously-bypass-approvals-and-sandbox"),
    model("opencode", "--model"),
});

/// See PathText::isCleanAbsolute.
bool isCleanAbsolutePath(std::string_view path);

/// 1 to 4 digits without a leading zero: a number of columns or rows, not yet bounded.
std::optional<int> dimension(std::optional<std::string_view> text);

/// A login shell ("-l"); tmux attaches to a session or makes one.
bool isShellArguments(std::string_view tool, Words arguments);

/// "--" and a target, perhaps after "-p" and a port. No other option, no remote command.
bool isSshArguments(Words arguments);

/// A host, perhaps after a user and "@": a name or IPv4 address, or an IPv6 literal in brackets.
/// At most 253 bytes in all, and neither "-" nor "@" in front.
bool isSshTarget(std::string_view text);

/// Flags of the agent's own, or a session to resume. The two can't be combined.
bool isAgentArguments(std::string_view tool, Words arguments);

/// No flag twice, and none that asks for a gentler mode beside one that skips every question.
bool isAgentFlags(std::string_view tool, Words arguments);

bool isModelId(std::string_view text);
bool isUuid(std::string_view text);
bool isOpencodeSessionId(std::string_view text);

/// Whether a program of this file name runs whatever text it is given: a name of the table in any
/// letter case, perhaps with a version ("python3.12", "node-18") and perhaps with ".exe".
bool isInterpreter(std::string_view name);

} // namespace velmo::Pty
