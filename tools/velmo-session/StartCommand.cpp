#include "tools/velmo-session/StartCommand.h"

#include "core/support/PathText.h"
#include "core/support/Text.h"
#include "core/terminal/AttachLabels.h"
#include "core/terminal/Pty.h"
#include "platform/host/PtyHostFileSystem.h"
#include "platform/posix/DiskPath.h"
#include "tools/velmo-session/AttachCommand.h"
#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/ControlClient.h"
#include "tools/velmo-session/Print.h"
#include "tools/velmo-session/Refusals.h"
#include "tools/velmo-session/SessionExit.h"
#include "tools/velmo-session/TerminalSize.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <expected>
#include <filesystem>
#include <string_view>
#include <utility>

extern char** environ; // NOLINT(readability-redundant-declaration): not in every <unistd.h>

namespace velmo {

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    return value == nullptr ? "" : value;
}

/// Returns the variables of the caller's environment that are sent to the host, which decides what
/// reaches the program.
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

/// Returns the command line in the policy's form. The program is an absolute path. A shell without
/// arguments gets "-l", which makes it a log-in shell, and tmux "new-session". The target of ssh
/// gets its "--".
std::vector<std::string> commandOf(const StartRequest& request) {
    std::vector<std::string> command = request.program;
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

std::vector<std::string> wordsOf(const std::string& folder,
                                 const std::vector<std::string>& command) {
    const PtyFrame::Size size = terminalSize();
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

std::string home() {
    Pty::Environment environment;
    if (std::string given = variable("HOME"); !given.empty())
        environment.emplace("HOME", std::move(given));
    const auto found = Pty::HostFileSystem().home(environment);
    return found ? absolute(*found) : "/";
}

int refused(const StartRequest& request, const std::string& folder, const std::string& program,
            const SessionReplyLine& reply) {
    std::string what;
    if (reply.reason == rawText(SessionRefusal::folder))
        what = folder + ": ";
    else if (reply.reason == rawText(SessionRefusal::name)
             || reply.reason == rawText(SessionRefusal::misnamed))
        what = request.name.value_or("") + ": ";
    else if (reply.reason != rawText(SessionRefusal::limit))
        what = program + ": ";
    return complain(PtyAttach::sanitizeLabel(what) + refusalText(SessionCall::start, reply),
                    SessionExit::refused);
}

/// Returns the reply, or in words for people why the host has not replied.
std::expected<SessionReplyLine, std::string> askToStart(const SessionCallLine& call) {
    // An idle host may end just before it reads the call, so the call is made twice.
    for (int tries = 0; tries < 2; ++tries) {
        auto host = ControlClient::connectOrStart();
        if (!host)
            return std::unexpected(host.error());
        if (auto reply = host->call(call))
            return *std::move(reply);
    }
    return std::unexpected(std::string(hostUnreachable));
}

/// Tells whether a session can be shown here, and otherwise says what to do.
bool canShow() {
    const bool hasTerminal = ::isatty(STDIN_FILENO) == 1 || ::isatty(STDOUT_FILENO) == 1;
    if (!hasTerminal)
        complain(
            "there is no terminal to show a session in; \"velmo-session start --detached\" and "
            "\"velmo-session stream\" need none",
            SessionExit::refused);
    return hasTerminal;
}

/// Returns the socket of the caller's SSH agent.
std::optional<std::string> agentOfCaller() {
    std::string agent = variable("SSH_AUTH_SOCK");
    const bool isGiven = !agent.empty() && Text::isValidUtf8(agent);
    return isGiven ? std::optional(std::move(agent)) : std::nullopt;
}

int attachById(const AttachRequest& request) {
    const auto reply = ControlClient::ask({.call = SessionCall::ticket,
                                           .session = request.session,
                                           .viewOnly = request.isViewOnly,
                                           .lines = request.lines,
                                           .agent = agentOfCaller()});
    if (!reply)
        return complain(hostUnreachable, SessionExit::hostGone);
    if (!reply->ok || !reply->ticket)
        return complain(refusalText(SessionCall::ticket, *reply), SessionExit::refused);
    return attach(*reply->ticket, request.detachChoice);
}

std::optional<std::string> idOfRunning(const std::string& name) {
    const auto reply = ControlClient::ask({.call = SessionCall::list});
    if (!reply || !reply->sessions)
        return std::nullopt;
    for (const SessionEntry& entry : *reply->sessions) {
        if (!entry.exitCode && entry.name == PtyAttach::sanitizeTitle(name))
            return entry.id;
    }
    return std::nullopt;
}

int show(const StartRequest& request, const std::string& id) {
    return request.isDetached ? print(id + "\n")
                              : attachById({.session = id, .detachChoice = request.detachChoice});
}

} // namespace

int start(const StartRequest& request) {
    if (!request.isDetached && !canShow())
        return SessionExit::refused;
    if (request.attachesIfNameRuns) {
        if (const auto id = idOfRunning(request.name.value_or("")))
            return show(request, *id);
    }
    const std::vector<std::string> command = commandOf(request);
    std::string folder = absolute(request.folder.value_or("."));
    SessionCallLine call{.call = SessionCall::start,
                         .name = request.name,
                         .words = wordsOf(folder, command),
                         .environment = environmentToSend()};
    if (!std::ranges::all_of(*call.words, Text::isValidUtf8))
        return complain("only words in UTF-8 can be handed on", SessionExit::refused);
    auto reply = askToStart(call);
    if (reply && reply->reason == rawText(SessionRefusal::folder) && !request.folder) {
        const std::string refusedFolder = std::exchange(folder, home());
        call.words = wordsOf(folder, command);
        reply = askToStart(call);
        if (reply && reply->ok)
            complain("no session may work in " + PtyAttach::sanitizeLabel(refusedFolder)
                         + "; it works in " + folder,
                     SessionExit::success);
    }
    if (!reply)
        return complain(reply.error(), SessionExit::hostGone);
    if (reply->ok && reply->session)
        return show(request, *reply->session);
    if (request.attachesIfNameRuns && reply->reason == rawText(SessionRefusal::name)) {
        if (const auto id = idOfRunning(request.name.value_or(""))) // another start was quicker
            return show(request, *id);
    }
    return refused(request, folder, command.front(), *reply);
}

int attachTo(const AttachRequest& request) {
    if (!canShow())
        return SessionExit::refused;
    if (request.session)
        return attachById(request);
    const auto reply = ControlClient::ask({.call = SessionCall::list});
    if (!reply || !reply->sessions)
        return complain(hostUnreachable, SessionExit::hostGone);
    std::vector<SessionEntry> running = *reply->sessions;
    std::erase_if(running, [](const SessionEntry& entry) { return entry.exitCode.has_value(); });
    if (running.size() != 1)
        return complain(running.empty() ? "there is no session"
                                        : "there are several sessions; name one of them",
                        SessionExit::refused);
    AttachRequest only = request;
    only.session = running.front().id;
    return attachById(only);
}

} // namespace velmo
