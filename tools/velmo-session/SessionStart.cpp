#include "tools/velmo-session/SessionStart.h"

#include "core/support/PathText.h"
#include "core/support/Text.h"
#include "core/terminal/Pty.h"
#include "platform/host/PtyHostFileSystem.h"
#include "platform/posix/DiskPath.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <utility>

extern char** environ; // NOLINT(readability-redundant-declaration): not in every <unistd.h>

namespace velmo::SessionStart {

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    return value == nullptr ? "" : value;
}

std::string logInShell() {
    if (const std::string shell = variable("SHELL"); !shell.empty())
        return shell;
    const passwd* const entry = ::getpwuid(::getuid()); // NOLINT(concurrency-mt-unsafe)
    return entry == nullptr ? "/bin/sh" : entry->pw_shell;
}

/// Returns the path that the shell would run for this name, or the name if PATH does not have it.
std::string lookedUp(const std::string& name) {
    if (name.contains('/'))
        return name;
    std::string_view rest;
    const std::string path = variable("PATH");
    for (rest = path; !rest.empty();) {
        const std::string_view folder = rest.substr(0, rest.find(':'));
        const std::string candidate = PathText::join(folder, name);
        if (folder.starts_with('/') && DiskPath::isExecutable(candidate))
            return candidate;
        rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
    }
    return name;
}

} // namespace

std::vector<std::string> environmentToSend() {
    std::vector<std::string> entries;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text(*entry);
        const std::string_view key = text.substr(0, text.find('='));
        const bool mayPass = Text::isOneOf(key, Pty::passed) || key.starts_with("LC_")
                             || key == Pty::testEnvironmentKey;
        if (mayPass && Text::isValidUtf8(text))
            entries.emplace_back(text);
    }
    return entries;
}

std::vector<std::string> commandOf(std::vector<std::string> command) {
    if (command.empty())
        command.push_back(logInShell());
    command.front() = lookedUp(command.front());
    const std::string_view tool = PathText::lastComponent(command.front());
    if (command.size() == 1 && Text::isOneOf(tool, Pty::shells))
        command.emplace_back(tool == "tmux" ? "new-session" : "-l");
    if (tool == "ssh" && command.size() > 1 && std::ranges::find(command, "--") == command.end())
        command.insert(command.end() - 1, "--");
    return command;
}

std::vector<std::string> wordsOf(const std::string& folder, PtyFrame::Size size,
                                 const std::vector<std::string>& command) {
    std::vector<std::string> words{
        "--cwd", folder, "--cols", std::to_string(size.cols), "--rows", std::to_string(size.rows)};
    if (PathText::lastComponent(command.front()) == "claude")
        words.insert(words.end(), {"--origin", "cli"});
    words.emplace_back("--");
    words.insert(words.end(), command.begin(), command.end());
    return words;
}

std::string absolute(const std::string& folder) {
    if (auto resolved = DiskPath::resolved(folder))
        return *std::move(resolved);
    std::error_code error;
    return std::filesystem::absolute(folder, error).lexically_normal().string();
}

std::string absoluteFile(const std::string& file) {
    const std::filesystem::path path(file);
    const std::string folder = path.parent_path().string();
    return PathText::join(absolute(folder.empty() ? "." : folder), path.filename().string());
}

std::string home() {
    Pty::Environment environment;
    if (std::string given = variable("HOME"); !given.empty())
        environment.emplace("HOME", std::move(given));
    const auto found = Pty::HostFileSystem().home(environment);
    return found ? absolute(*found) : "/";
}

} // namespace velmo::SessionStart
