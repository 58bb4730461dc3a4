#include "tools/pages/Completion.h"

#include "core/support/Text.h"

#include <algorithm>
#include <span>
#include <string>

namespace velmo::Pages {

namespace {

using CommandLine::Operands;
using CommandLine::Option;
using CommandLine::Program;
using CommandLine::Verb;

std::string functionName(const Program& program) {
    std::string name = "_" + std::string(program.name);
    std::ranges::replace(name, '-', '_');
    return name;
}

/// Returns the text in single quotes, as bash and zsh read it.
std::string singleQuoted(std::string_view text) {
    return "'" + Text::replacedAll(text, "'", "'\\''") + "'";
}

/// Returns the text in single quotes, as fish reads it.
std::string fishQuoted(std::string_view text) {
    return "'" + Text::replacedAll(Text::replacedAll(text, "\\", "\\\\"), "'", "\\'") + "'";
}

std::vector<Option> commonOptions(const Program& program) {
    std::vector<Option> options(program.options.begin(), program.options.end());
    options.insert(options.end(), CommandLine::ownOptions.begin(), CommandLine::ownOptions.end());
    return options;
}

std::vector<Option> allOptions(const Program& program, const Verb& verb) {
    std::vector<Option> options(verb.options.begin(), verb.options.end());
    const auto common = commonOptions(program);
    options.insert(options.end(), common.begin(), common.end());
    return options;
}

bool takesValue(const Option& option) {
    return !option.value.empty();
}

bool isLong(const Option& option) {
    return option.name.starts_with("--");
}

std::string joined(
    std::span<const Option> options, std::string_view between,
    bool (*isWanted)(const Option&) = [](const Option&) { return true; }) {
    std::string text;
    for (const Option& option : options) {
        if (isWanted(option))
            text.append(text.empty() ? "" : between).append(option.name);
    }
    return text;
}

std::string verbNames(const Program& program, bool (*isWanted)(const Verb&)) {
    std::string text;
    for (const Verb& verb : program.verbs) {
        if (isWanted(verb))
            text.append(text.empty() ? "" : " ").append(verb.name);
    }
    return text;
}

/// Returns the alternatives of a value that are words, "on off" for "on|off" and a space between
/// them; empty for a value of another kind.
std::string alternatives(std::string_view value, std::string_view between = " ") {
    if (!value.contains('|'))
        return "";
    std::string words;
    while (!value.empty()) {
        const std::size_t end = std::min(value.find('|'), value.size());
        if (value.front() >= 'a' && value.front() <= 'z')
            words.append(words.empty() ? "" : between).append(value.substr(0, end));
        value.remove_prefix(std::min(end + 1, value.size()));
    }
    return words;
}

std::string_view operandKind(const Verb& verb) {
    if (verb.operands == Operands::command)
        return "command";
    return verb.operandNames.contains("FOLDER") ? "folder" : "none";
}

// bash.

/// Returns the pattern for a `case`: the verb, with '' too for the default verb, or "*" for a
/// program without verbs.
std::string bashPattern(const Program& program, const Verb& verb) {
    if (!program.hasVerbs())
        return "*";
    return std::string(verb.name) + (verb.name == program.defaultVerb ? " | ''" : "");
}

std::string bashValue(const Option& option) {
    std::string how;
    if (option.value == "FOLDER")
        how = "-d";
    else if (option.value == "FILE")
        how = "-f";
    else if (const std::string words = alternatives(option.value, "\\n"); !words.empty())
        how = "-W $'" + words + "'";
    return how.empty() ? "" : "        " + std::string(option.name) + ") how=(" + how + ") ;;\n";
}

} // namespace

Marks bashMarks(const Program& program) {
    std::string tables;
    std::string values;
    for (const Option& option : program.options)
        values += bashValue(option);
    for (const Verb& verb : program.verbs) {
        const auto options = allOptions(program, verb);
        tables += "        " + bashPattern(program, verb)
                  + ") options=" + singleQuoted(joined(options, " "))
                  + " values=" + singleQuoted(" " + joined(options, " ", takesValue) + " ")
                  + " operands=" + std::string(operandKind(verb)) + " ;;\n";
        for (const Option& option : verb.options)
            values += bashValue(option);
    }
    return {{"PROGRAM", std::string(program.name)},
            {"FUNCTION", functionName(program)},
            {"VERBS", verbNames(program, [](const Verb&) { return true; })},
            {"TABLES", tables},
            {"VALUES", values}};
}

// zsh.

namespace {

/// Returns an argument for `_arguments`: 'name=[explanation]:value:action', with a plus sign in the
/// place of the equals sign behind an option of one letter.
std::string zshOption(const Option& option) {
    std::string help(option.help);
    std::erase_if(help, [](char c) { return c == '[' || c == ']'; });
    const std::string name(option.name);
    if (!takesValue(option))
        return singleQuoted(name + "[" + help + "]");
    std::string text = name + (isLong(option) ? "=" : "+") + "[" + help + "]";
    text += ":" + Text::replacedAll(option.value, ":", "\\:") + ":";
    if (option.value == "FOLDER")
        text += "_files -/";
    else if (option.value == "FILE")
        text += "_files";
    else if (const std::string words = alternatives(option.value); !words.empty())
        text += "(" + words + ")";
    else
        text += " ";
    return singleQuoted(text);
}

std::string zshArguments(const Program& program, const Verb& verb) {
    std::string text = "arguments=(";
    for (const Option& option : allOptions(program, verb))
        text += "\n            " + zshOption(option);
    if (verb.operands == Operands::command)
        text += "\n            '*::command:_normal'";
    else if (operandKind(verb) == "folder")
        text += "\n            '1:folder:_files -/'";
    return text + ")\n";
}

} // namespace

Marks zshMarks(const Program& program) {
    std::string verbs;
    std::string tables;
    for (const Verb& verb : program.verbs) {
        if (program.hasVerbs())
            verbs +=
                "    " + singleQuoted(std::string(verb.name) + ":" + std::string(verb.help)) + "\n";
        tables += "    " + bashPattern(program, verb) + ")\n        " + zshArguments(program, verb)
                  + "        ;;\n";
    }
    return {{"PROGRAM", std::string(program.name)},
            {"FUNCTION", functionName(program)},
            {"VERBS", verbs},
            {"TABLES", tables}};
}

// fish.

namespace {

std::string fishOption(const std::string& start, const Option& option) {
    std::string line = start + (isLong(option) ? " -l " : " -s ")
                       + std::string(option.name.substr(isLong(option) ? 2 : 1));
    if (option.value == "FOLDER")
        line += " -x -a '(__fish_complete_directories)'";
    else if (option.value == "FILE")
        line += " -r -F";
    else if (takesValue(option))
        line += " -x -a " + fishQuoted(alternatives(option.value));
    return line + " -d " + fishQuoted(option.help) + "\n";
}

} // namespace

Marks fishMarks(const Program& program) {
    const std::string function = functionName(program);
    const std::string start = "complete -c " + std::string(program.name);
    const auto at = [&](const Verb& verb) {
        const std::string verbs =
            verb.name.empty() || verb.name == program.defaultVerb
                ? " ''" + (verb.name.empty() ? "" : " " + std::string(verb.name))
                : " " + std::string(verb.name);
        return start + " -n \"_" + function + "_is_at" + verbs + "\"";
    };
    std::vector<Option> valued = commonOptions(program);
    std::string tables;
    const std::string anywhere = start + " -n _" + function + "_takes_ours";
    for (const Option& option : valued)
        tables += fishOption(anywhere, option);
    for (const Verb& verb : program.verbs) {
        if (!verb.name.empty())
            tables.append(start)
                .append(" -n \"_" + function + "_is_at ''\" -a ")
                .append(verb.name)
                .append(" -d " + fishQuoted(verb.help) + "\n");
        for (const Option& option : verb.options)
            tables += fishOption(at(verb), option);
        if (operandKind(verb) == "folder")
            tables.append(at(verb)).append(" -a '(__fish_complete_directories)'\n");
        valued.insert(valued.end(), verb.options.begin(), verb.options.end());
    }
    return {
        {"PROGRAM", std::string(program.name)},
        {"FUNCTION", "_" + function},
        {"VALUED", joined(valued, " ", takesValue)},
        {"COMMANDS",
         verbNames(program, [](const Verb& verb) { return verb.operands == Operands::command; })},
        {"TABLES", tables}};
}

} // namespace velmo::Pages
