#include "core/terminal/PtyWords.h"

#include "core/support/Ascii.h"
#include "core/support/Decimal.h"
#include "core/support/PathText.h"
#include "core/support/Text.h"
#include "core/terminal/DevTerminal.h"

#include <algorithm>

namespace velmo::Pty {

namespace {

constexpr std::int64_t maxDimension = 9999; // four digits
constexpr std::size_t longestTarget = 253;
constexpr std::size_t longestModel = 100;

constexpr std::string_view skipPermissions = "--dangerously-skip-permissions";
constexpr std::string_view bypassSandbox = "--dangerously-bypass-approvals-and-sandbox";
constexpr auto gentlerModes =
    std::to_array<std::string_view>({"--permission-mode", "--sandbox", "--ask-for-approval"});

struct Resume {
    std::string_view agent;
    std::string_view option;
    bool (*isSession)(std::string_view);
};

constexpr auto resumes = std::to_array<Resume>({
    {.agent = "claude", .option = "--resume", .isSession = isUuid},
    {.agent = "codex", .option = "resume", .isSession = isUuid},
    {.agent = "opencode", .option = "-s", .isSession = isOpencodeSessionId},
});

bool isUserOrHostName(std::string_view text) {
    return !text.empty() && Ascii::isMadeOfLettersDigitsAnd("-._", text);
}

bool isHost(std::string_view text) {
    if (!text.starts_with('['))
        return isUserOrHostName(text);
    if (text.size() < 3 || !text.ends_with(']'))
        return false;
    return std::ranges::all_of(text.substr(1, text.size() - 2),
                               [](char c) { return Ascii::isHex(c) || c == '.' || c == ':'; });
}

bool isPermittedValue(const AgentOption& option, std::string_view value) {
    // "" pads the list, and is nothing that could be meant.
    return option.value == FlagValue::model ? isModelId(value)
                                            : !value.empty() && Text::isOneOf(value, option.list);
}

const AgentOption* findOption(std::string_view tool, std::string_view flag) {
    const auto* const found = std::ranges::find_if(agentOptions, [&](const AgentOption& option) {
        return option.agent == tool && option.flag == flag;
    });
    return found == agentOptions.end() ? nullptr : found;
}

} // namespace

bool isCleanAbsolutePath(std::string_view path) {
    return PathText::isCleanAbsolute(path);
}

std::optional<int> dimension(std::optional<std::string_view> text) {
    return text
        .and_then(
            [](std::string_view given) { return Decimal::parsePositive(given, maxDimension); })
        .transform([](std::int64_t value) { return static_cast<int>(value); });
}

bool isShellArguments(std::string_view tool, Words arguments) {
    if (arguments.size() != 1)
        return false;
    if (tool == "tmux")
        return arguments[0] == "attach-session" || arguments[0] == "new-session";
    return arguments[0] == "-l";
}

bool isSshArguments(Words arguments) {
    if (arguments.size() == 4 && arguments[0] == "-p" && DevTerminal::sshPort(arguments[1]))
        arguments = arguments.subspan(2);
    return arguments.size() == 2 && arguments[0] == "--" && isSshTarget(arguments[1]);
}

bool isSshTarget(std::string_view text) {
    if (text.size() > longestTarget || text.starts_with('-'))
        return false;
    const std::size_t at = text.find('@');
    if (at == std::string_view::npos)
        return isHost(text);
    return isUserOrHostName(text.substr(0, at)) && isHost(text.substr(at + 1));
}

bool isAgentArguments(std::string_view tool, Words arguments) {
    if (!Text::isOneOf(tool, agents))
        return false;
    if (isAgentFlags(tool, arguments))
        return true;
    return arguments.size() == 2 && std::ranges::any_of(resumes, [&](const Resume& resume) {
               return resume.agent == tool && resume.option == arguments[0]
                      && resume.isSession(arguments[1]);
           });
}

bool isAgentFlags(std::string_view tool, Words arguments) {
    if (!Text::isOneOf(tool, agents) || arguments.size() > maxAgentFlagWords)
        return false;
    std::vector<std::string_view> seen;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const AgentOption* const option = findOption(tool, arguments[i]);
        if (option == nullptr || Text::isOneOf(option->flag, seen))
            return false;
        seen.push_back(option->flag);
        if (option->value == FlagValue::none)
            continue;
        ++i;
        if (i == arguments.size() || !isPermittedValue(*option, arguments[i]))
            return false;
    }
    if (!Text::isOneOf(skipPermissions, seen) && !Text::isOneOf(bypassSandbox, seen))
        return true;
    return std::ranges::none_of(gentlerModes,
                                [&](std::string_view mode) { return Text::isOneOf(mode, seen); });
}

bool isModelId(std::string_view text) {
    return !text.empty() && text.size() <= longestModel && Ascii::isLetterOrDigit(text.front())
           && Ascii::isMadeOfLettersDigitsAnd("._:/@[]-", text);
}

bool isUuid(std::string_view text) {
    constexpr std::string_view shape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    return std::ranges::equal(text, shape, [](char c, char expected) {
        return expected == '-' ? c == '-' : Ascii::isHex(c);
    });
}

bool isOpencodeSessionId(std::string_view text) {
    constexpr std::string_view prefix = "ses_";
    return text.size() >= 12 && text.size() <= 68 && text.starts_with(prefix)
           && Ascii::isMadeOfLettersDigitsAnd("", text.substr(prefix.size()));
}

bool isInterpreter(std::string_view name) {
    const std::string lowered = Text::lowercased(name);
    std::string_view rest = lowered;
    if (constexpr std::string_view windowsSuffix = ".exe"; rest.ends_with(windowsSuffix))
        rest.remove_suffix(windowsSuffix.size());

    // The version begins at the first number and is made of numbers, dots and dashes.
    std::size_t stemLength = 0;
    bool hasVersion = false;
    for (const Text::Scalar& scalar : Text::Scalars(rest)) {
        if (Text::isNumber(scalar.value))
            hasVersion = true;
        else if (!hasVersion)
            stemLength += scalar.bytes.size();
        else if (scalar.value != U'.' && scalar.value != U'-')
            return false;
    }
    std::string_view stem = rest.substr(0, stemLength);
    while (hasVersion && (stem.ends_with('-') || stem.ends_with('.')))
        stem.remove_suffix(1);
    return Text::isOneOf(stem, interpreterNames);
}

} // namespace velmo::Pty
