#include "core/terminal/Pty.h"

#include "core/support/PathText.h"
#include "core/support/Text.h"
#include "core/terminal/AllowedFolder.h"
#include "core/terminal/OptionPairs.h"
#include "core/terminal/PtyFrame.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace velmo::Pty {

namespace {

constexpr auto spawnOptions =
    std::to_array<std::string_view>({"--cwd", "--cols", "--rows", "--origin"});
constexpr std::string_view separator = "--";
constexpr std::string_view commandLineOrigin = "cli";
constexpr std::string_view commandLineTool = "claude";

constexpr std::string_view defaultPath = "/usr/bin:/bin:/usr/sbin:/sbin";
constexpr std::string_view defaultLanguage = "en_US.UTF-8";
constexpr std::string_view localePrefix = "LC_";

std::string_view valueOf(const Environment& environment, std::string_view key) {
    const auto found = environment.find(key);
    return found == environment.end() ? std::string_view() : found->second;
}

bool beginsWithOneOf(std::string_view text, std::span<const std::string_view> prefixes) {
    return std::ranges::any_of(prefixes,
                               [&](std::string_view prefix) { return text.starts_with(prefix); });
}

/// The parts of a request that has passed every rule on words.
struct Command {
    std::string_view cwd; ///< clean, not resolved
    PtyFrame::Size size;
    Words words; ///< the program as given and its arguments
    std::string_view tool;

    [[nodiscard]] const std::string& program() const { return words.front(); }

    [[nodiscard]] Words arguments() const { return words.subspan(1); }

    [[nodiscard]] bool isShell() const { return Text::isOneOf(tool, shells); }

    [[nodiscard]] bool isSsh() const { return tool == "ssh"; }
};

bool hasPermittedArguments(const Command& command, bool fromCommandLine,
                           const Environment& environment) {
    if (command.isShell())
        return Text::isOneOf(PathText::parent(command.program()), shellDirs)
               && isShellArguments(command.tool, command.arguments());
    if (command.isSsh())
        return Text::isOneOf(command.program(), systemSsh) && isSshArguments(command.arguments());
    if (Text::isOneOf(command.tool, agents))
        return fromCommandLine || isAgentArguments(command.tool, command.arguments());
    return command.tool == testFixture && valueOf(environment, testEnvironmentKey) == "1";
}

bool isPlainArgument(const std::string& argument) {
    return argument.size() <= maxArgumentLength && !argument.contains('\0')
           && Text::isValidUtf8(argument);
}

std::optional<Command> parseWords(Words words, const Environment& environment) {
    const auto end = std::ranges::find(words, separator);
    if (end == words.end())
        return std::nullopt;
    const auto optionCount = static_cast<std::size_t>(end - words.begin());
    const auto options = OptionPairs::read(words.first(optionCount), spawnOptions);
    const Words commandWords = words.subspan(optionCount + 1);
    if (!options || commandWords.empty())
        return std::nullopt;

    const auto origin = options->value("--origin");
    const auto cwd = options->value("--cwd");
    const auto cols = dimension(options->value("--cols"));
    const auto rows = dimension(options->value("--rows"));
    if (origin.value_or(commandLineOrigin) != commandLineOrigin || !cwd
        || !isCleanAbsolutePath(*cwd) || !cols || !rows || !PtyFrame::validSize(*cols, *rows))
        return std::nullopt;

    const std::string& program = commandWords.front();
    const Command command{.cwd = *cwd,
                          .size = {.cols = *cols, .rows = *rows},
                          .words = commandWords,
                          .tool = PathText::lastComponent(program)};
    if (!isCleanAbsolutePath(program) || command.arguments().size() > maxArguments
        || !std::ranges::all_of(command.arguments(), isPlainArgument)
        || (origin && command.tool != commandLineTool)
        || !hasPermittedArguments(command, origin.has_value(), environment))
        return std::nullopt;
    return command;
}

/// Returns the resolved working folder, if the command may work there. A shell or ssh may also work
/// in the home folder itself.
std::optional<std::string> workingFolder(const Command& command, const Environment& environment,
                                         const FileSystem& fs) {
    auto cwd = fs.realpath(command.cwd);
    const auto given = fs.home(environment);
    const auto home = given ? fs.realpath(*given) : std::nullopt;
    if (!cwd || !home || !fs.isDirectory(*cwd))
        return std::nullopt;
    const bool mayBeHome = command.isShell() || command.isSsh();
    if (!(mayBeHome && *cwd == *home) && !DevTerminal::isAllowedResolvedFolder(*cwd, *home))
        return std::nullopt;
    return cwd;
}

bool isPermittedShell(const Command& command, std::string_view resolved) {
    // No arguments suit both a shell and tmux, so that neither can be a link to the other.
    const std::string_view name = PathText::lastComponent(resolved);
    return Text::isOneOf(name, shells) && isShellArguments(name, command.arguments())
           && (Text::isOneOf(PathText::parent(resolved), shellDirs)
               || beginsWithOneOf(resolved, shellCellars));
}

bool isPermittedTool(const Command& command, std::string_view resolved) {
    if (isInterpreter(PathText::lastComponent(resolved)))
        return false;
    return !command.isSsh() || Text::isOneOf(resolved, systemSsh)
           || (resolved.ends_with("/bin/ssh") && beginsWithOneOf(resolved, sshCellars));
}

/// Returns the resolved path of the program. Returns nothing if it can't be executed, if another
/// user could have put it there, or if it is a link to a program that its name does not allow.
std::optional<std::string> resolvedProgram(const Command& command, const Environment& environment,
                                           const FileSystem& fs) {
    auto resolved = fs.realpath(command.program());
    if (!resolved || !fs.isExecutable(*resolved)
        || !isTrustedProgram(command.program(), *resolved, environment, fs))
        return std::nullopt;
    const bool permitted = command.isShell() ? isPermittedShell(command, *resolved)
                                             : isPermittedTool(command, *resolved);
    return permitted ? resolved : std::nullopt;
}

bool isInside(std::string_view folder, std::string_view root) {
    const std::string_view bare = PathText::withoutTrailingSlash(root);
    return folder.starts_with(bare) && (folder.size() == bare.size() || folder[bare.size()] == '/');
}

} // namespace

std::optional<SpawnRequest> parseSpawn(Words words, const Environment& environment,
                                       const FileSystem& fileSystem) {
    const auto command = parseWords(words, environment);
    if (!command)
        return std::nullopt;
    auto cwd = workingFolder(*command, environment, fileSystem);
    if (!cwd)
        return std::nullopt;
    auto program = resolvedProgram(*command, environment, fileSystem);
    if (!program)
        return std::nullopt;
    return SpawnRequest{.cwd = *std::move(cwd),
                        .cols = command->size.cols,
                        .rows = command->size.rows,
                        .program = *std::move(program),
                        .argv = {command->words.begin(), command->words.end()}};
}

bool isTrustedProgram(std::string_view given, std::string_view resolved,
                      const Environment& environment, const FileSystem& fs) {
    const auto isWritable = [&](std::string_view folder) { return fs.isWorldWritable(folder); };
    std::vector<std::string> unsafe(temporaryRoots.begin(), temporaryRoots.end());
    if (const std::string_view own = valueOf(environment, "TMPDIR"); !own.empty()) {
        if (auto root = fs.realpath(own))
            unsafe.push_back(*std::move(root));
    }
    return std::ranges::all_of(std::array{given, resolved}, [&](std::string_view path) {
        const std::string_view folder = PathText::parent(path);
        return std::ranges::none_of(unsafe,
                                    [&](const std::string& root) { return isInside(folder, root); })
               && !PathText::anyUpToTheRoot(folder, isWritable);
    });
}

Environment childEnvironment(const Environment& environment) {
    Environment child;
    for (const auto& [key, value] : environment) {
        const bool wanted = Text::isOneOf(key, passed) || key.starts_with(localePrefix);
        const bool whole = !key.contains('=') && !key.contains('\0') && !value.contains('\0');
        if (wanted && whole && !value.empty())
            child.emplace(key, value);
    }
    child.try_emplace("PATH", defaultPath);
    if (!child.contains("LC_ALL") && !child.contains("LC_CTYPE"))
        child.try_emplace("LANG", defaultLanguage);
    child.insert_or_assign("TERM", "xterm-256color");
    child.insert_or_assign("COLORTERM", "truecolor");
    return child;
}

std::int32_t exitCode(std::int32_t status) {
    constexpr std::int32_t stopped = 0x7F;
    constexpr std::int32_t signalBase = 128;
    const std::int32_t signal = status & 0x7F;
    if (signal == 0)
        return (status >> 8) & 0xFF;
    return signal == stopped ? 1 : signalBase + signal;
}

} // namespace velmo::Pty
