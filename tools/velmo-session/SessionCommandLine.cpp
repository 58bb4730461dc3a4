#include "tools/velmo-session/SessionCommandLine.h"

#include <algorithm>
#include <array>
#include <optional>

namespace velmo {

namespace {

struct Verb {
    std::string_view name;
    std::string_view operands;
    std::string_view help;
    std::size_t maxWords = 0;
    bool takesProgram = false; ///< the words are all that follows the options
};

struct Option {
    std::string_view verb;
    std::string_view name;
    std::string_view value; ///< what stands for it in the help; empty: it takes none
    std::string_view help;
};

constexpr auto verbs = std::to_array<Verb>({
    {.name = "start",
     .operands = "[[--] PROGRAM [ARGUMENT...]]",
     .help = "start a session, your log-in shell without PROGRAM, and attach to it",
     .takesProgram = true},
    {.name = "attach",
     .operands = "[ID|NAME]",
     .help = "continue a session in this terminal; Control-] and then d detaches",
     .maxWords = 1},
    {.name = "list", .operands = "", .help = "print the sessions"},
    {.name = "end",
     .operands = "ID|NAME",
     .help = "hang up, then terminate, then kill what runs in a session",
     .maxWords = 1},
    {.name = "stream",
     .operands = "ID|NAME",
     .help = "continue a session over standard input and output, in frames",
     .maxWords = 1},
    {.name = "serve", .operands = "", .help = "run the session host in the foreground"},
    {.name = "pty-attach",
     .operands = "",
     .help = "join a session by a ticket, as a terminal window does"},
});

constexpr auto options = std::to_array<Option>({
    {"start", "--cwd", "FOLDER", "work there; else here, or at home where that is not allowed"},
    {"start", "--name", "NAME", "call the session so"},
    {"start", "--detached", "", "print its id instead of attaching"},
    {"list", "--json", "", "as one JSON line"},
    {"serve", "--background", "", "log to a file, and end when nobody needs the host"},
    {"pty-attach", "--ticket-file", "FILE", "the ticket"},
    {"pty-attach", "--probe", "", "print what this client speaks"},
});

constexpr std::string_view exitStatuses =
    "Exit status: 0 done, or detached; the program's own code when it ends while attached;\n"
    "122 wrong usage; 123 refused; 124 the host is gone or can't be reached; 128+N after\n"
    "signal N.\n";

const Option* findOption(std::string_view verb, std::string_view name) {
    const auto* const found = std::ranges::find_if(
        options, [&](const Option& option) { return option.verb == verb && option.name == name; });
    return found == options.end() ? nullptr : found;
}

std::string usageOf(const Verb& verb) {
    std::string text = "  " + std::string(verb.name);
    for (const Option& option : options) {
        if (option.verb != verb.name)
            continue;
        text.append(" [").append(option.name);
        if (!option.value.empty())
            text.append(" ").append(option.value);
        text.append("]");
    }
    if (!verb.operands.empty())
        text.append(" ").append(verb.operands);
    return text + "\n";
}

} // namespace

std::expected<SessionLine, std::string> readSessionLine(std::span<const std::string> arguments) {
    if (arguments.empty())
        return std::unexpected("a verb is missing; see velmo-session --help");
    const auto* const verb = std::ranges::find(verbs, arguments.front(), &Verb::name);
    if (verb == verbs.end())
        return std::unexpected("unknown verb '" + arguments.front()
                               + "'; see velmo-session --help");
    SessionLine line{.verb = verb->name};
    auto rest = arguments.subspan(1);
    while (!rest.empty() && rest.front().size() > 1 && rest.front().starts_with('-')) {
        const std::string& word = rest.front();
        rest = rest.subspan(1);
        if (word == "--")
            break;
        const std::size_t equals = word.find('=');
        const Option* const option = findOption(verb->name, word.substr(0, equals));
        if (option == nullptr)
            return std::unexpected("unknown option '" + word + "'; see velmo-session --help");
        const bool hasValue = equals != std::string::npos;
        if (option->value.empty() ? hasValue : !hasValue && rest.empty())
            return std::unexpected(std::string(option->name)
                                   + (hasValue ? " takes no value" : " needs a value"));
        std::string value = hasValue ? word.substr(equals + 1) : "";
        if (!hasValue && !option->value.empty()) {
            value = rest.front();
            rest = rest.subspan(1);
        }
        line.options.insert_or_assign(option->name, std::move(value));
    }
    line.words.assign(rest.begin(), rest.end());
    if (!verb->takesProgram && line.words.size() > verb->maxWords)
        return std::unexpected("unexpected word '" + line.words[verb->maxWords] + "'");
    return line;
}

std::string sessionHelp() {
    std::string text = "Runs terminal sessions that go on when their window closes.\n\n"
                       "Usage: velmo-session VERB [OPTION...] [WORD...]\n\n";
    for (const Verb& verb : verbs) {
        text.append(usageOf(verb)).append("      ").append(verb.help).append("\n");
        for (const Option& option : options) {
            if (option.verb == verb.name)
                text.append("      ")
                    .append(option.name)
                    .append(": ")
                    .append(option.help)
                    .append("\n");
        }
    }
    return text.append("\n").append(exitStatuses);
}

} // namespace velmo
