#include "core/support/Text.h"
#include "core/terminal/DevTerminal.h"
#include "fuzz/Fuzz.h"
#include "lab/instruments/ScriptParts.h"

namespace velmo::Fuzz {

namespace {

using namespace DevTerminal;
const std::string home = "/Users/me";
const std::string attachFolder = "/private/T/velmo-term";
const std::string executable = "/Applications/A.app/Contents/MacOS/a";

std::optional<OpenRequest> parse(std::span<const std::string> words) {
    return parseOpen(words, home, attachFolder, executable,
                     [](std::string_view path) { return std::optional(std::string(path)); });
}

/// Returns the options that ask for the request.
std::vector<std::string> optionsOf(const OpenRequest& request) {
    std::vector<std::string> words{"--app", std::string(rawText(request.app))};
    const auto add = [&](std::string_view name, const std::optional<std::string>& value) {
        if (value)
            words.insert(words.end(), {std::string(name), *value});
    };
    add("--cwd", request.cwd);
    add("--tool", request.tool());
    add("--tool-path", request.toolPath);
    if (const auto* ssh = std::get_if<Ssh>(&request.command)) {
        add("--ssh-target", ssh->target);
        add("--ssh-port", ssh->port.transform([](int port) { return std::to_string(port); }));
    }
    if (const auto* attach = std::get_if<Attach>(&request.command))
        add("--attach-file", attach->ticketFile);
    if (request.tool() && request.exec)
        add("--exec", "1");
    if (request.fullscreen)
        add("--fullscreen", "1");
    return words;
}

void requireLimits(const OpenRequest& request) {
    require(!request.cwd || isAllowedResolvedFolder(*request.cwd, home));
    require(!request.toolPath || isSafePath(*request.toolPath));
    require(!request.tool() || Text::isOneOf(*request.tool(), tools));
    const auto script = openScript(request);
    require(script.has_value() == (request.app != App::ghostty));
    if (script) {
        // Whatever the request asks for stands inside a literal, which is exactly the command.
        const bool program = request.app == App::iterm && request.exec;
        const std::string command = program ? itermCommand(request) : shellCommand(request);
        for (const std::string& literal : readScript(*script).literals)
            require(literal.starts_with("com.") || literal == command);
        require(!Text::hasControl(command));
    }
    for (const std::string& word : ghosttyArguments(request))
        require(!Text::hasControl(word));
}

void checkLauncherOptions(Input input) {
    const auto words = input.words();
    if (const auto focus = parseFocus(words)) {
        require(focus->pid >= 1 && isTty(focus->tty.value_or("/dev/ttys0")));
        require(!focus->tty || itermFocusScript(*focus->tty));
    }
    if (const auto request = parse(words)) {
        requireLimits(*request);
        require(parse(optionsOf(*request)) == request);
    }
}

const Target launcherOptionsTarget("LauncherOptions", checkLauncherOptions);

} // namespace

} // namespace velmo::Fuzz
