#include "core/support/Ascii.h"
#include "tools/command-line/CommandLine.h"

#include <vector>

namespace velmo::CommandLine {

namespace {

/// The column in which explanations start.
constexpr std::size_t helpColumn = 28;

std::string usageOf(const Option& option) {
    std::string text(option.name);
    if (!option.value.empty())
        text.append(" ").append(option.value);
    return text;
}

void addRow(std::string& text, std::string_view left, std::string_view right) {
    std::string row = "  " + std::string(left);
    if (row.size() + 2 > helpColumn)
        row += "\n" + std::string(helpColumn, ' ');
    else
        row.resize(helpColumn, ' ');
    text.append(row).append(right).append("\n");
}

void addOptions(std::string& text, std::string_view heading, std::span<const Option> options) {
    if (options.empty())
        return;
    text.append("\n").append(heading).append("\n");
    for (const Option& option : options)
        addRow(text, usageOf(option), option.help);
}

void addCommonOptions(std::string& text, const Program& program) {
    std::vector<Option> common(program.options.begin(), program.options.end());
    common.insert(common.end(), ownOptions.begin(), ownOptions.end());
    addOptions(text, program.verbs.size() > 1 ? "Options of every verb:" : "Options:", common);
}

std::string sentence(std::string_view text) {
    std::string result(text);
    if (!result.empty() && Ascii::isLetter(result.front()))
        result.front() = static_cast<char>(result.front() & ~0x20);
    return result + ".";
}

std::string verbHelp(const Program& program, const Verb& verb) {
    std::string text = "Usage: " + usageOf(program, verb) + "\n\n";
    text += sentence(verb.name.empty() ? program.help : verb.help) + "\n";
    addOptions(text, "Options:", verb.options);
    addCommonOptions(text, program);
    return text;
}

} // namespace

std::string usageOf(const Program& program, const Verb& verb) {
    std::string text(program.name);
    if (!verb.name.empty())
        text.append(" ").append(verb.name);
    text.append(" [OPTION...]");
    if (!verb.operandNames.empty())
        text.append(" ").append(verb.operandNames);
    return text;
}

std::string helpText(const Program& program, const Verb* verb) {
    std::string text;
    if (verb && program.hasVerbs()) {
        text = verbHelp(program, *verb);
    } else if (!program.hasVerbs()) {
        text = verbHelp(program, program.verbs.front());
    } else {
        text = "Usage: " + std::string(program.name) + " [VERB] [OPTION...]\n\n";
        text += sentence(program.help) + "\n\nVerbs:\n";
        for (const Verb& each : program.verbs)
            addRow(text, each.name, each.help);
        addCommonOptions(text, program);
    }
    for (const Section& section : program.sections)
        text.append("\n").append(section.heading).append("\n").append(section.text).append("\n");
    return text;
}

std::optional<std::string> ownPage(const Program& program, const Line& line) {
    if (line.has(helpOption.name))
        return helpText(program, line.namesVerb ? line.verb : nullptr);
    if (line.has(versionOption.name))
        return std::string(program.name) + " " + std::string(program.version) + "\n";
    return std::nullopt;
}

} // namespace velmo::CommandLine
