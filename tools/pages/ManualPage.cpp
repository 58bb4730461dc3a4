#include "tools/pages/ManualPage.h"

#include "core/support/Ascii.h"

#include <string>

namespace velmo::Pages {

namespace {

using CommandLine::Option;
using CommandLine::Program;
using CommandLine::Verb;

/// Returns the text for troff: its hyphens stay as typed, and troff finds neither escapes nor
/// requests in it.
std::string troff(std::string_view text) {
    std::string result;
    bool startsLine = true;
    for (const char c : text) {
        if (startsLine && (c == '.' || c == '\''))
            result += "\\&";
        if (c == '-' || c == '\\')
            result += c == '-' ? "\\-" : "\\e";
        else
            result += c;
        startsLine = c == '\n';
    }
    return result;
}

std::string upper(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        c = Ascii::isLetter(c) ? static_cast<char>(c & ~0x20) : c;
    return result;
}

std::string paragraph(const Option& option) {
    const bool isHelp = option.name == CommandLine::helpOption.name;
    std::string text = ".TP\n.B " + troff(isHelp ? "-h, --help" : option.name);
    if (!option.value.empty())
        text += " \\fI" + troff(option.value) + "\\fR";
    return text + "\n" + troff(option.help) + ".\n";
}

std::string synopsis(const Program& program) {
    std::string text;
    const auto add = [&](const std::string& usage) {
        text.append(text.empty() ? ".B " : "\n.br\n.B ").append(troff(usage));
    };
    if (program.hasVerbs() && !program.defaultVerb.empty())
        add(std::string(program.name) + " [OPTION...]");
    for (const Verb& verb : program.verbs)
        add(usageOf(program, verb));
    return text;
}

/// Returns the options of the program, then each verb with its own.
std::string options(const Program& program) {
    std::string text;
    for (const Option& option : program.options)
        text += paragraph(option);
    for (const Option& option : CommandLine::ownOptions)
        text += paragraph(option);
    for (const Verb& verb : program.verbs) {
        if (!verb.name.empty())
            text += ".SS " + troff(verb.name) + "\n" + troff(verb.help) + ".\n";
        for (const Option& option : verb.options)
            text += paragraph(option);
    }
    text.pop_back();
    return text;
}

} // namespace

Marks manualMarks(const Program& program) {
    return {{"PROGRAM", troff(program.name)},      {"HELP", troff(program.help)},
            {"TITLE", upper(troff(program.name))}, {"VERSION", std::string(program.version)},
            {"SYNOPSIS", synopsis(program)},       {"OPTIONS", options(program)}};
}

} // namespace velmo::Pages
