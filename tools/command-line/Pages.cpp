#include "core/support/Ascii.h"
#include "tools/command-line/CommandLine.h"

#include <algorithm>
#include <array>
#include <ranges>

namespace velmo::CommandLine {

namespace {

constexpr std::array programOptions{helpOption, versionOption};

/// The column in which explanations start.
constexpr std::size_t helpColumn = 28;

std::string usageOf(const Option& option) {
    std::string text(option.name);
    if (!option.value.empty())
        text.append(" ").append(option.value);
    return text;
}

std::string usageOf(const Program& program, const Verb& verb) {
    std::string text(program.name);
    if (!verb.name.empty())
        text.append(" ").append(verb.name);
    text.append(" [OPTION...]");
    if (!verb.operandNames.empty())
        text.append(" ").append(verb.operandNames);
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
    common.insert(common.end(), programOptions.begin(), programOptions.end());
    addOptions(text, program.verbs.size() > 1 ? "Options of every verb:" : "Options:", common);
}

bool hasVerbs(const Program& program) {
    return !program.verbs.front().name.empty();
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

std::string helpText(const Program& program, const Verb* verb) {
    std::string text;
    if (verb && hasVerbs(program)) {
        text = verbHelp(program, *verb);
    } else if (!hasVerbs(program)) {
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

namespace {

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

void addParagraph(std::string& page, const Option& option) {
    page += ".TP\n.B " + troff(option.name);
    if (!option.value.empty())
        page += " \\fI" + troff(option.value) + "\\fR";
    page += "\n" + troff(option.help) + ".\n";
}

std::string upper(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        c = Ascii::isLetter(c) ? static_cast<char>(c & ~0x20) : c;
    return result;
}

} // namespace

std::string manualPage(const Program& program) {
    std::string page = ".TH " + upper(program.name) + " 1 \"\" \"Velmo "
                       + std::string(program.version) + "\" \"User Commands\"\n.SH NAME\n"
                       + troff(program.name) + " \\- " + troff(program.help) + "\n.SH SYNOPSIS\n";
    for (const Verb& verb : program.verbs)
        page += (&verb == program.verbs.data() ? ".B " : ".br\n.B ") + troff(usageOf(program, verb))
                + "\n";
    page += ".SH OPTIONS\n";
    for (const Option& option : program.options)
        addParagraph(page, option);
    for (const Option& option : programOptions)
        addParagraph(page, option);
    for (const Verb& verb : program.verbs) {
        if (!verb.name.empty())
            page += ".SS " + troff(verb.name) + "\n" + troff(verb.help) + ".\n";
        for (const Option& option : verb.options)
            addParagraph(page, option);
    }
    for (const Section& section : program.sections)
        page += ".SH " + upper(troff(section.heading.substr(0, section.heading.find(':'))))
                + "\n.nf\n" + troff(section.text) + "\n.fi\n";
    return page;
}

namespace {

std::vector<Option> allOptions(const Program& program, const Verb& verb) {
    std::vector<Option> options(verb.options.begin(), verb.options.end());
    options.insert(options.end(), program.options.begin(), program.options.end());
    options.insert(options.end(), programOptions.begin(), programOptions.end());
    return options;
}

std::string joined(std::span<const Option> options, bool onlyWithValue, std::string_view between) {
    std::string text;
    for (const Option& option : options) {
        if (onlyWithValue && option.value.empty())
            continue;
        text.append(text.empty() ? "" : between).append(option.name);
    }
    return text;
}

std::string verbNames(const Program& program) {
    std::string text;
    for (const Verb& verb : program.verbs)
        text.append(text.empty() ? "" : " ").append(verb.name);
    return text;
}

std::string functionName(const Program& program) {
    std::string name = "_" + std::string(program.name);
    std::ranges::replace(name, '-', '_');
    return name;
}

/// Returns the text in single quotes, in a form that all three shells read.
std::string singleQuoted(std::string_view text) {
    std::string result;
    for (const char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return "'" + result + "'";
}

bool takesCommand(const Verb& verb) {
    return verb.operands == Operands::command;
}

/// Returns the pattern for bash's `case`: the verb, with '' too for the default verb, or "*" for a
/// program without verbs.
std::string bashPatterns(const Program& program, const Verb& verb) {
    if (verb.name.empty())
        return "*";
    return verb.name == program.defaultVerb ? std::string(verb.name) + "|''"
                                            : std::string(verb.name);
}

std::string bashCompletion(const Program& program) {
    const std::string function = functionName(program);
    std::string script = function + R"(() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    local verb= options= values= first=0 i word
)";
    if (hasVerbs(program)) {
        script += "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
                  "        word=${COMP_WORDS[i]}\n"
                  "        case $word in\n"
                  "            "
                  + joined(program.options, true, "|")
                  + (joined(program.options, true, "|").empty() ? "''" : "")
                  + ") i=$((i + 1)) ;;\n"
                    "            -*) ;;\n"
                    "            *) verb=$word first=$i; break ;;\n"
                    "        esac\n"
                    "    done\n";
    }
    script += "    case $verb in\n";
    for (const Verb& verb : program.verbs) {
        const auto options = allOptions(program, verb);
        script += "        " + bashPatterns(program, verb)
                  + ") options=" + singleQuoted(joined(options, false, " "))
                  + " values=" + singleQuoted("|" + joined(options, true, "|") + "|") + " ;;\n";
    }
    script += "    esac\n";
    for (const Verb& verb : program.verbs) {
        if (!takesCommand(verb))
            continue;
        script += "    if [[ $verb == " + singleQuoted(verb.name) + R"( ]]; then
        for ((i = first + 1; i < COMP_CWORD; ++i)); do
            word=${COMP_WORDS[i]}
            if [[ $word == -- ]]; then _command_offset $((i + 1)); return; fi
            if [[ $word == -* ]]; then [[ $values == *"|$word|"* ]] && i=$((i + 1)); continue; fi
            _command_offset "$i"
            return
        done
        [[ $current != -* && $values != *"|$previous|"* ]] && { _command_offset "$COMP_CWORD"; return; }
    fi
)";
    }
    script += "    if [[ $values == *\"|$previous|\"* ]]; then COMPREPLY=($(compgen -f -- "
              "\"$current\")); "
              "return; fi\n";
    if (hasVerbs(program))
        script += "    [[ $verb ]] || options=\"" + verbNames(program) + " $options\"\n";
    script += "    COMPREPLY=($(compgen -W \"$options\" -- \"$current\"))\n}\ncomplete -F "
              + function + " " + std::string(program.name) + "\n";
    return script;
}

/// Returns an argument for zsh's `_arguments`: 'name[explanation]:value:action'.
std::string zshOption(const Option& option) {
    const auto plain = [](std::string_view text) {
        std::string result(text);
        std::erase_if(result, [](char c) { return c == '[' || c == ']' || c == ':'; });
        return result;
    };
    std::string text = std::string(option.name) + (option.value.empty() ? "" : "=") + "["
                       + plain(option.help) + "]";
    if (!option.value.empty())
        text += ":" + plain(option.value) + ":_files";
    return singleQuoted(text);
}

std::string zshArguments(const Program& program, const Verb& verb) {
    std::string text = "_arguments -S";
    for (const Option& option : allOptions(program, verb))
        text += " \\\n            " + zshOption(option);
    if (takesCommand(verb))
        text += " \\\n            '*::command:_normal'";
    return text + "\n";
}

std::string zshCompletion(const Program& program) {
    std::string script = "#compdef " + std::string(program.name) + "\n";
    if (!hasVerbs(program))
        return script + zshArguments(program, program.verbs.front());
    script += "local -a verbs\nverbs=(\n";
    for (const Verb& verb : program.verbs)
        script +=
            "    " + singleQuoted(std::string(verb.name) + ":" + std::string(verb.help)) + "\n";
    script += ")\nlocal line state\n_arguments -C -S";
    for (const Option& option : program.options)
        script += " \\\n    " + zshOption(option);
    for (const Option& option : programOptions)
        script += " \\\n    " + zshOption(option);
    script += " \\\n    '1:verb:->verb' '*::arguments:->arguments'\ncase $state in\n"
              "    verb) _describe verb verbs ;;\n"
              "    arguments) case $line[1] in\n";
    for (const Verb& verb : program.verbs)
        script += "        " + std::string(verb.name) + ") " + zshArguments(program, verb)
                  + "            ;;\n";
    return script + "    esac ;;\nesac\n";
}

/// Returns the option as fish's `complete` wants it: by its long name, or by its letter.
std::string fishName(std::string_view option) {
    const bool isLong = option.starts_with("--");
    return isLong ? " -l " + std::string(option.substr(2)) : " -s " + std::string(option.substr(1));
}

std::string fishCompletion(const Program& program) {
    const std::string start = "complete -c " + std::string(program.name);
    std::string script = start + " -f\n";
    const auto option = [&](const Option& each, const std::string& condition) {
        script += start + condition + fishName(each.name) + (each.value.empty() ? "" : " -r -F")
                  + " -d " + singleQuoted(each.help) + "\n";
    };
    for (const Option& each : program.options)
        option(each, "");
    for (const Option& each : programOptions)
        option(each, "");
    for (const Verb& verb : program.verbs) {
        const std::string within =
            verb.name.empty() ? ""
                              : " -n '__fish_seen_subcommand_from " + std::string(verb.name) + "'";
        if (!verb.name.empty())
            script += start + " -n __fish_use_subcommand -a " + std::string(verb.name) + " -d "
                      + singleQuoted(verb.help) + "\n";
        for (const Option& each : verb.options)
            option(each, within);
        if (takesCommand(verb))
            script += start + within + " -a '(__fish_complete_subcommand)'\n";
    }
    return script;
}

} // namespace

std::string completion(const Program& program, Shell shell) {
    switch (shell) {
    case Shell::bash:
        return bashCompletion(program);
    case Shell::zsh:
        return zshCompletion(program);
    case Shell::fish:
        return fishCompletion(program);
    }
    return {};
}

} // namespace velmo::CommandLine
