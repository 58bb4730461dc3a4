#include "core/terminal/DevTerminal.h"

#include "core/support/Ascii.h"
#include "core/support/Decimal.h"
#include "core/support/PathText.h"
#include "core/support/Text.h"
#include "core/terminal/OptionPairs.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <ranges>
#include <utility>

namespace velmo::DevTerminal {

namespace {

constexpr auto openOptions =
    std::to_array<std::string_view>({"--app", "--cwd", "--tool", "--tool-path", "--ssh-target",
                                     "--ssh-port", "--fullscreen", "--exec", "--attach-file"});
constexpr auto notWithSsh =
    std::to_array<std::string_view>({"--cwd", "--tool", "--tool-path", "--exec"});
constexpr auto notWithAttach = std::to_array<std::string_view>(
    {"--cwd", "--tool", "--tool-path", "--ssh-target", "--ssh-port", "--exec"});
constexpr auto focusOptions = std::to_array<std::string_view>({"--pid", "--tty"});

constexpr std::int64_t maxPort = 65535;
constexpr std::int64_t maxPid = std::numeric_limits<std::int32_t>::max();

constexpr std::string_view hostCharacters = "._-";

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

/// iTerm2 starts the program without a shell: a small one goes to the folder, puts the tool's own
/// folder first on PATH and becomes the tool. "velmo" is its $0.
constexpr std::string_view itermLauncher =
    R"(/bin/sh -c 'cd -- "$1" && PATH="${2%/*}:$PATH" exec "$2"' velmo )";

constexpr std::string_view attachMode = "pty-attach";
constexpr std::string_view ticketOption = "--ticket-file";

template<class... Cases>
struct Overload : Cases... {
    using Cases::operator()...;
};

template<class... Cases>
auto match(const Command& command, Cases... cases) {
    return std::visit(Overload<Cases...>{std::move(cases)...}, command);
}

std::string join(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts)
        text += part;
    return text;
}

std::string portOption(const Ssh& ssh) {
    return ssh.port ? "-p " + std::to_string(*ssh.port) + " " : "";
}

std::string attachCommand(const OpenRequest& request, const Attach& attach) {
    return join({shellQuote(request.program()), " ", attachMode, " ", ticketOption, " ",
                 shellQuote(attach.ticketFile)});
}

std::optional<std::string> focusScript(std::string_view script, std::string_view tty) {
    if (!isTty(tty))
        return std::nullopt;
    return Text::replacedAll(script, ttyMark, appleScriptString(tty));
}

bool hasAny(const OptionPairs& options, std::span<const std::string_view> names) {
    return std::ranges::any_of(names, [&](std::string_view name) { return options.has(name); });
}

/// A switch that is given has the value "1".
bool isSwitch(const OptionPairs& options, std::string_view name) {
    return options.value(name).value_or("1") == "1";
}

std::optional<std::string> owned(std::optional<std::string_view> text) {
    return text.transform([](std::string_view view) { return std::string(view); });
}

std::optional<OpenRequest> attachRequest(const OptionPairs& options, OpenRequest request,
                                         const std::optional<std::string>& folder,
                                         const std::optional<std::string>& executable) {
    const std::string_view file = options.value("--attach-file").value_or("");
    if (hasAny(options, notWithAttach) || !isAttachFile(file, folder) || !executable
        || !PathText::isCleanAbsoluteFile(*executable))
        return std::nullopt;
    request.command = Attach{std::string(file)};
    request.exec = true;
    request.executable = executable;
    return request;
}

std::optional<OpenRequest> sshRequest(const OptionPairs& options, OpenRequest request) {
    const std::string_view target = options.value("--ssh-target").value_or("");
    const auto portText = options.value("--ssh-port");
    const auto port = portText.and_then(sshPort);
    if (hasAny(options, notWithSsh) || !isSshTarget(target)
        || portText.has_value() != port.has_value())
        return std::nullopt;
    request.command = Ssh{.target = std::string(target), .port = port};
    request.exec = true;
    return request;
}

std::optional<OpenRequest> toolRequest(const OptionPairs& options, OpenRequest request,
                                       std::string_view home, const Resolve& resolve) {
    const auto cwd = options.value("--cwd");
    const auto tool = options.value("--tool");
    const auto path = options.value("--tool-path");
    if (options.has("--ssh-port") || !cwd || !isSafePath(*cwd) || !tool
        || !Text::isOneOf(*tool, tools))
        return std::nullopt;
    if (path && (!isSafePath(*path) || PathText::lastComponent(*path) != *tool))
        return std::nullopt;
    if (!isAllowedFolder(*cwd, home, resolve)) // last: it asks the disk
        return std::nullopt;
    request.cwd = owned(cwd);
    request.command = Tool{std::string(*tool)};
    request.exec = options.has("--exec");
    request.toolPath = owned(path);
    return request;
}

/// Lower case is what the deny lists are written in; full case folding is what a disk that ignores
/// letter case compares by, where "ſ" opens what "s" names.
bool isDenied(std::string_view piece, std::span<const std::string_view> denied) {
    return Text::isOneOf(Text::lowercased(piece), denied)
           || Text::isOneOf(Text::caseFolded(piece), denied);
}

bool equalInLowercase(std::string_view a, std::string_view b) {
    return Text::lowercased(a) == Text::lowercased(b);
}

bool isAbsoluteUtf8(std::string_view path) {
    return path.starts_with('/') && Text::isValidUtf8(path);
}

} // namespace

std::string_view bundleIdentifier(App app) {
    switch (app) {
    case App::terminal:
        return "com.apple.Terminal";
    case App::iterm:
        return "com.googlecode.iterm2";
    case App::ghostty:
        break;
    }
    return "com.mitchellh.ghostty";
}

OpenRequest OpenRequest::ofSsh(App app, Ssh ssh, bool fullscreen) {
    return {.app = app, .command = std::move(ssh), .fullscreen = fullscreen, .exec = true};
}

OpenRequest OpenRequest::ofAttach(App app, Attach attach, std::string executable, bool fullscreen) {
    return {.app = app,
            .command = std::move(attach),
            .fullscreen = fullscreen,
            .exec = true,
            .executable = std::move(executable)};
}

std::optional<std::string> OpenRequest::tool() const {
    const auto* const found = std::get_if<Tool>(&command);
    return found == nullptr ? std::nullopt : std::optional(found->name);
}

std::string OpenRequest::program() const {
    return match(
        command, [&](const Tool& named) { return toolPath.value_or(named.name); },
        [](const Ssh&) { return std::string("ssh"); },
        [&](const Attach&) { return executable.value_or(""); });
}

std::optional<OpenRequest> parseOpen(std::span<const std::string> args, std::string_view home,
                                     const std::optional<std::string>& attachFolder,
                                     const std::optional<std::string>& executable,
                                     const Resolve& resolve) {
    const auto options = OptionPairs::read(args, openOptions);
    if (!options)
        return std::nullopt;
    const auto app = options->value("--app").and_then(fromRawText<App>);
    if (!app || !isSwitch(*options, "--fullscreen") || !isSwitch(*options, "--exec"))
        return std::nullopt;
    const OpenRequest request{.app = *app, .fullscreen = options->has("--fullscreen")};
    if (options->has("--attach-file"))
        return attachRequest(*options, request, attachFolder, executable);
    if (options->has("--ssh-target"))
        return sshRequest(*options, request);
    return toolRequest(*options, request, home, resolve);
}

std::optional<FocusRequest> parseFocus(std::span<const std::string> args) {
    const auto options = OptionPairs::read(args, focusOptions);
    if (!options)
        return std::nullopt;
    const auto tty = options->value("--tty");
    const auto pid = options->value("--pid").and_then(
        [](std::string_view text) { return Decimal::parsePositive(text, maxPid); });
    if (!pid || (tty && !isTty(*tty)))
        return std::nullopt;
    return FocusRequest{.pid = static_cast<std::int32_t>(*pid), .tty = owned(tty)};
}

std::optional<std::string> openScript(const OpenRequest& request) {
    const auto filled = [](std::string_view script, std::string_view command) {
        return Text::replacedAll(script, commandMark, appleScriptString(command));
    };
    switch (request.app) {
    case App::terminal:
        return filled(terminalOpen, shellCommand(request));
    case App::iterm:
        return request.exec ? filled(itermOpenProgram, itermCommand(request))
                            : filled(itermOpenShell, shellCommand(request));
    case App::ghostty:
        break;
    }
    return std::nullopt;
}

std::vector<std::string> ghosttyArguments(const OpenRequest& request) {
    std::vector<std::string> arguments{"-na", "Ghostty", "--args"};
    const auto add = [&](std::initializer_list<std::string_view> words) {
        arguments.insert(arguments.end(), words.begin(), words.end());
    };
    if (request.fullscreen)
        add({"--fullscreen=true"});
    const std::string program = request.program();
    match(
        request.command,
        [&](const Tool&) {
            add({"--working-directory=" + request.cwd.value_or(""), "-e", program});
        },
        [&](const Ssh& ssh) {
            add({"-e", program});
            if (ssh.port)
                add({"-p", std::to_string(*ssh.port)});
            add({"--", ssh.target});
        },
        [&](const Attach& attach) {
            add({"-e", program, attachMode, ticketOption, attach.ticketFile});
        });
    return arguments;
}

std::string shellCommand(const OpenRequest& request) {
    return match(
        request.command,
        [&](const Tool& tool) {
            const std::string folder = shellQuote(request.cwd.value_or(""));
            return request.exec ? join({"cd -- ", folder, " && exec ",
                                        shellQuote(request.program()), "; exit"})
                                : join({"cd ", folder, " && ", tool.name});
        },
        [](const Ssh& ssh) {
            return join({"exec ssh ", portOption(ssh), "-- ", shellQuote(ssh.target), "; exit"});
        },
        [&](const Attach& attach) { return "exec " + attachCommand(request, attach); });
}

std::string itermCommand(const OpenRequest& request) {
    return match(
        request.command,
        [&](const Tool&) {
            return join({itermLauncher, shellQuote(request.cwd.value_or("")), " ",
                         shellQuote(request.program())});
        },
        [](const Ssh& ssh) {
            return join({"/usr/bin/ssh ", portOption(ssh), "-- ", shellQuote(ssh.target)});
        },
        [&](const Attach& attach) { return attachCommand(request, attach); });
}

std::optional<std::string> terminalFocusScript(std::string_view tty) {
    return focusScript(terminalFocus, tty);
}

std::optional<std::string> itermFocusScript(std::string_view tty) {
    return focusScript(itermFocus, tty);
}

std::string shellQuote(std::string_view text) {
    return join({"'", Text::replacedAll(text, "'", R"('\'')"), "'"});
}

std::string appleScriptString(std::string_view text) {
    // The backslash first: the one that a quote gets must not be doubled.
    const std::string escaped = Text::replacedAll(text, R"(\)", R"(\\)");
    return join({R"(")", Text::replacedAll(escaped, R"(")", R"(\")"), R"(")"});
}

bool isTty(std::string_view text) {
    constexpr std::string_view prefix = "/dev/ttys";
    constexpr std::size_t mostDigits = 4;
    if (!text.starts_with(prefix))
        return false;
    const std::string_view digits = text.substr(prefix.size());
    return !digits.empty() && digits.size() <= mostDigits
           && std::ranges::all_of(digits, Ascii::isDigit);
}

bool isSshTarget(std::string_view text) {
    const std::size_t at = text.find('@');
    const std::string_view host = at == std::string_view::npos ? text : text.substr(at + 1);
    const std::string_view user = at == std::string_view::npos ? host : text.substr(0, at);
    return !user.empty() && !host.empty() && Ascii::isMadeOfLettersDigitsAnd(hostCharacters, user)
           && Ascii::isMadeOfLettersDigitsAnd(hostCharacters, host);
}

std::optional<int> sshPort(std::string_view text) {
    return Decimal::parsePositive(text, maxPort).transform([](std::int64_t port) {
        return static_cast<int>(port);
    });
}

bool isSafePath(std::string_view path) {
    return PathText::isCleanAbsolute(path);
}

bool isAttachFile(std::string_view file, const std::optional<std::string>& folder) {
    if (!folder || !PathText::isCleanAbsoluteFile(file))
        return false;
    const std::string_view holder = PathText::withoutTrailingSlash(*folder);
    return PathText::parent(file) == holder;
}

bool isAllowedResolvedFolder(std::string_view path, std::string_view home) {
    if (!isAbsoluteUtf8(path) || !isAbsoluteUtf8(home))
        return false;
    // Piece by piece: lower case may have another length than the text it comes from.
    const auto pieces = PathText::pieces(path);
    const auto homePieces = PathText::pieces(home);
    if (homePieces.empty() || pieces.size() <= homePieces.size())
        return false;
    const auto split = pieces.begin() + std::ssize(homePieces);
    if (!std::equal(pieces.begin(), split, homePieces.begin(), equalInLowercase))
        return false;
    const std::span below(split, pieces.end());
    return !isDenied(below.front(), deniedTop)
           && std::ranges::none_of(below, [](std::string_view piece) {
                  return PathText::isDotOrDotDot(piece) || isDenied(piece, deniedAnywhere);
              });
}

bool isAllowedFolder(std::string_view path, std::string_view home, const Resolve& resolve) {
    if (std::ranges::any_of(PathText::pieces(path), PathText::isDotOrDotDot))
        return false;
    const auto resolvedPath = resolve(path);
    const auto resolvedHome = resolve(home);
    return resolvedPath && resolvedHome && isAllowedResolvedFolder(*resolvedPath, *resolvedHome);
}

} // namespace velmo::DevTerminal
