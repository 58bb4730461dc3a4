#include "core/terminal/DevTerminalScripts.h"

#include "core/support/Text.h"
#include "core/terminal/DevTerminal.h"
#include "core/terminal/PtyAttach.h"
#include "core/terminal/Quoting.h"

#include <variant>

namespace velmo::DevTerminal {

namespace {

constexpr std::string_view commandMark = "{command}";
constexpr std::string_view ttyMark = "{tty}";

constexpr std::string_view terminalOpen =
    R"(set wasRunning to application id "com.apple.Terminal" is running
tell application id "com.apple.Terminal"
    if wasRunning then
        do script {command}
    else
        -- Launching Terminal opens a window already: use it instead of a second one.
        repeat 30 times
            if (count of windows) > 0 then exit repeat
            delay 0.1
        end repeat
        if (count of windows) > 0 then
            do script {command} in window 1
        else
            do script {command}
        end if
    end if
    activate
end tell)";

constexpr std::string_view itermOpenProgram = R"(tell application id "com.googlecode.iterm2"
    activate
    create window with default profile command {command}
end tell)";

constexpr std::string_view itermOpenShell = R"(tell application id "com.googlecode.iterm2"
    activate
    set newWindow to (create window with default profile)
    tell current session of newWindow to write text {command}
end tell)";

constexpr std::string_view terminalFocus = R"(tell application id "com.apple.Terminal"
    repeat with w in windows
        repeat with t in tabs of w
            if tty of t is {tty} then
                set selected of t to true
                set index of w to 1
                activate
                return "ok"
            end if
        end repeat
    end repeat
end tell
return "missing")";

constexpr std::string_view itermFocus = R"(tell application id "com.googlecode.iterm2"
    repeat with w in windows
        repeat with t in tabs of w
            repeat with s in sessions of t
                if tty of s is {tty} then
                    select w
                    tell t to select
                    tell s to select
                    activate
                    return "ok"
                end if
            end repeat
        end repeat
    end repeat
end tell
return "missing")";

/// iTerm2 starts a program without a shell, so this line starts a small one. The shell changes to
/// the folder, puts the tool's own folder first on PATH and becomes the tool. "velmo" is its $0.
constexpr std::string_view itermLauncher =
    R"(/bin/sh -c 'cd -- "$1" && PATH="${2%/*}:$PATH" exec "$2"' velmo )";

using Words = std::vector<std::string>;

std::string folderWord(const OpenRequest& request) {
    return shellQuote(request.cwd.value_or(""));
}

std::string programWord(const OpenRequest& request) {
    return shellQuote(request.program());
}

/// The options and the target of an ssh command line.
std::string sshWords(const Ssh& ssh) {
    const std::string port = ssh.port ? "-p " + std::to_string(*ssh.port) + " " : "";
    return port + "-- " + shellQuote(ssh.target);
}

std::string attachLine(const OpenRequest& request, const Attach& attach) {
    return programWord(request) + " " + std::string(PtyAttach::mode) + " "
           + std::string(PtyAttach::ticketOption) + " " + shellQuote(attach.ticketFile);
}

// Every kind of command has an overload of its own, so that a missing one does not compile.

std::string shellLine(const OpenRequest& request, const Tool& tool) {
    if (request.exec)
        return "cd -- " + folderWord(request) + " && exec " + programWord(request) + "; exit";
    return "cd " + folderWord(request) + " && " + tool.name;
}

std::string shellLine(const OpenRequest& /*request*/, const Ssh& ssh) {
    return "exec ssh " + sshWords(ssh) + "; exit";
}

std::string shellLine(const OpenRequest& request, const Attach& attach) {
    return "exec " + attachLine(request, attach);
}

std::string itermLine(const OpenRequest& request, const Tool& /*tool*/) {
    return std::string(itermLauncher) + folderWord(request) + " " + programWord(request);
}

std::string itermLine(const OpenRequest& /*request*/, const Ssh& ssh) {
    return "/usr/bin/ssh " + sshWords(ssh);
}

std::string itermLine(const OpenRequest& request, const Attach& attach) {
    return attachLine(request, attach);
}

Words ghosttyWords(const OpenRequest& request, const Tool& /*tool*/) {
    return {"--working-directory=" + request.cwd.value_or(""), "-e", request.program()};
}

Words ghosttyWords(const OpenRequest& request, const Ssh& ssh) {
    Words words{"-e", request.program()};
    if (ssh.port)
        words.insert(words.end(), {"-p", std::to_string(*ssh.port)});
    words.insert(words.end(), {"--", ssh.target});
    return words;
}

Words ghosttyWords(const OpenRequest& request, const Attach& attach) {
    return {"-e", request.program(), std::string(PtyAttach::mode),
            std::string(PtyAttach::ticketOption), attach.ticketFile};
}

std::string filled(std::string_view script, std::string_view mark, std::string_view text) {
    return Text::replacedAll(script, mark, appleScriptString(text));
}

std::optional<std::string> focusScript(std::string_view script, std::string_view tty) {
    return isTty(tty) ? std::optional(filled(script, ttyMark, tty)) : std::nullopt;
}

} // namespace

std::optional<std::string> openScript(const OpenRequest& request) {
    switch (request.app) {
    case App::terminal:
        return filled(terminalOpen, commandMark, shellCommand(request));
    case App::iterm:
        return request.exec ? filled(itermOpenProgram, commandMark, itermCommand(request))
                            : filled(itermOpenShell, commandMark, shellCommand(request));
    case App::ghostty:
        break;
    }
    return std::nullopt;
}

std::vector<std::string> ghosttyArguments(const OpenRequest& request) {
    Words arguments{"-na", "Ghostty", "--args"};
    if (request.fullscreen)
        arguments.emplace_back("--fullscreen=true");
    const Words words = std::visit(
        [&](const auto& command) { return ghosttyWords(request, command); }, request.command);
    arguments.insert(arguments.end(), words.begin(), words.end());
    return arguments;
}

std::string shellCommand(const OpenRequest& request) {
    return std::visit([&](const auto& command) { return shellLine(request, command); },
                      request.command);
}

std::string itermCommand(const OpenRequest& request) {
    return std::visit([&](const auto& command) { return itermLine(request, command); },
                      request.command);
}

std::optional<std::string> terminalFocusScript(std::string_view tty) {
    return focusScript(terminalFocus, tty);
}

std::optional<std::string> itermFocusScript(std::string_view tty) {
    return focusScript(itermFocus, tty);
}

} // namespace velmo::DevTerminal
