#include "core/terminal/PtyWords.h"

#include "core/support/Ascii.h"
#include "core/support/Decimal.h"
#include "core/support/PathText.h"
#include "core/support/Text.h"

#include <algorithm>

namespace velmo::Pty {

namespace {

constexpr std::int64_t maxDimension = 9999; // four digits
constexpr std::size_t maxModel = 100;       // bytes

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

constexpr bool isAgent(std::string_view tool) {
    return std::ranges::find(agents, tool) != agents.end();
}

static_assert(std::ranges::all_of(agentOptions, isAgent, &AgentOption::agent));
static_assert(std::ranges::all_of(resumes, isAgent, &Resume::agent));

bool isPermittedValue(const AgentOption& option, std::string_view value) {
    // "" pads the list and is not one of its values.
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

bool isAgentArguments(std::string_view tool, Words arguments) {
    if (!isAgent(tool))
        return false;
    if (isAgentFlags(tool, arguments))
        return true;
    return arguments.size() == 2 && std::ranges::any_of(resumes, [&](const Resume& resume) {
               return resume.agent == tool && resume.option == arguments[0]
                      && resume.isSession(arguments[1]);
           });
}

bool isAgentFlags(std::string_view tool, Words arguments) {
    if (!isAgent(tool) || arguments.size() > maxAgentFlagWords)
        return false;
    std::vector<const AgentOption*> seen;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const AgentOption* const option = findOption(tool, arguments[i]);
        if (option == nullptr || std::ranges::find(seen, option) != seen.end())
            return false;
        seen.push_back(option);
        if (option->value == FlagValue::none)
            continue;
        ++i;
        if (i == arguments.size() || !isPermittedValue(*option, arguments[i]))
            return false;
    }
    const auto isAmongThem = [&](Questions kind) {
        return std::ranges::find(seen, kind, &AgentOption::questions) != seen.end();
    };
    return !isAmongThem(Questions::skipped) || !isAmongThem(Questions::chosen);
}

bool isModelId(std::string_view text) {
    return !text.empty() && text.size() <= maxModel && Ascii::isLetterOrDigit(text.front())
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
    constexpr std::size_t minLength = 12; // bytes
    constexpr std::size_t maxLength = 68; // bytes
    return text.size() >= minLength && text.size() <= maxLength && text.starts_with(prefix)
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
