#include "tools/command-line/CommandLine.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace velmo::CommandLine {

std::optional<std::string_view> Line::value(std::string_view option) const {
    for (const Given& each : std::views::reverse(given)) {
        if (each.option->name == option)
            return each.value;
    }
    return std::nullopt;
}

namespace {

constexpr std::string_view endOfOptions = "--";

const Option* optionNamed(std::span<const Option> options, std::string_view name) {
    const auto found = std::ranges::find(options, name, &Option::name);
    return found == options.end() ? nullptr : &*found;
}

std::string quoted(std::string_view word) {
    return "'" + std::string(word) + "'";
}

/// Reads a command line word by word. After a mistake reads on, to learn whether there is a
/// command.
class Reader {
public:
    Reader(const Program& program, std::span<const std::string_view> arguments)
        : program_(program), rest_(arguments), line_{.verb = &verbNamed(program.defaultVerb)} {}

    std::expected<Line, Mistake> read() {
        while (!rest_.empty() && !wantsHelp()) {
            const std::string_view word = take();
            if (word == endOfOptions && line_.verb->operands != Operands::none) {
                takeWordsBehindDashes();
                break;
            }
            if (word.size() > 1 && word.starts_with('-'))
                takeOption(word);
            else if (!line_.namesVerb && program_.hasVerbs())
                takeVerb(word);
            else
                takeOperand(word);
        }
        if (!wantsHelp() && line_.verb == &none)
            mistake("a verb is missing; see " + seeHelp());
        if (mistake_.text.empty())
            return std::move(line_);
        mistake_.namesCommand =
            mistake_.namesCommand
            || (line_.verb->operands == Operands::command && !line_.words.empty());
        return std::unexpected(std::move(mistake_));
    }

private:
    /// The verb of a line that does not name one yet, if the program has no default.
    static constexpr Verb none{};

    [[nodiscard]] const Verb& verbNamed(std::string_view name) const {
        const auto found = std::ranges::find(program_.verbs, name, &Verb::name);
        return found == program_.verbs.end() ? none : *found;
    }

    void mistake(std::string text) {
        if (mistake_.text.empty())
            mistake_.text = std::move(text);
    }

    std::string_view take() {
        const std::string_view word = rest_.front();
        rest_ = rest_.subspan(1);
        return word;
    }

    [[nodiscard]] bool wantsHelp() const {
        return line_.has(helpOption.name) || line_.has(versionOption.name);
    }

    [[nodiscard]] std::string seeHelp() const {
        std::string text(program_.name);
        if (!line_.verb->name.empty() && line_.namesVerb)
            text.append(" ").append(line_.verb->name);
        return text.append(" --help");
    }

    void takeOption(std::string_view word) {
        const std::size_t equals = word.find('=');
        const std::string_view name = word == "-h" ? helpOption.name : word.substr(0, equals);
        const Option* const option = known(name);
        if (!option) {
            mistake("unknown option " + quoted(word) + "; see " + seeHelp());
            return;
        }
        const bool hasValue = equals != std::string_view::npos;
        if (option->value.empty() && hasValue)
            mistake(std::string(name) + " takes no value");
        else if (!option->value.empty() && !hasValue && rest_.empty())
            mistake(std::string(name) + " needs a value: " + std::string(name) + " "
                    + std::string(option->value));
        else if (option->value.empty())
            line_.given.push_back({option, ""});
        else
            line_.given.push_back(
                {option, std::string(hasValue ? word.substr(equals + 1) : take())});
    }

    [[nodiscard]] const Option* known(std::string_view name) const {
        for (const auto& options : {std::span<const Option>(ownOptions), program_.options}) {
            if (const Option* const option = optionNamed(options, name))
                return option;
        }
        return optionNamed(line_.verb->options, name);
    }

    [[nodiscard]] std::string verbNames() const {
        std::string names;
        for (const Verb& each : program_.verbs) {
            const bool isLast = &each == &program_.verbs.back();
            if (!names.empty())
                names.append(isLast ? " and " : ", ");
            names.append(each.name);
        }
        return names;
    }

    void takeVerb(std::string_view word) {
        const Verb& verb = verbNamed(word);
        if (&verb == &none) {
            mistake("unknown verb " + quoted(word) + "; there are " + verbNames());
            return;
        }
        for (const auto& given : line_.given) {
            if (!optionNamed(program_.options, given.option->name)
                && !optionNamed(verb.options, given.option->name))
                mistake(std::string(given.option->name) + " is no option of "
                        + std::string(verb.name));
        }
        line_.verb = &verb;
        line_.namesVerb = true;
    }

    void takeOperand(std::string_view word) {
        if (line_.verb->operands == Operands::command) {
            line_.words.emplace_back(word);
            takeWords();
        } else if (line_.words.size() < line_.verb->maxWords) {
            line_.words.emplace_back(word);
        } else {
            mistake("unexpected word " + quoted(word) + "; see " + seeHelp());
        }
    }

    void takeWordsBehindDashes() {
        if (line_.verb->operands == Operands::command && rest_.empty()) {
            mistake("a command is missing behind --; see " + seeHelp());
            mistake_.namesCommand = true;
        }
        takeWords();
    }

    void takeWords() {
        if (line_.verb->operands == Operands::command) {
            line_.words.insert(line_.words.end(), rest_.begin(), rest_.end());
            rest_ = {};
        }
        while (!rest_.empty())
            takeOperand(take());
    }

    const Program& program_;
    std::span<const std::string_view> rest_;
    Line line_;
    Mistake mistake_;
};

} // namespace

std::expected<Line, Mistake> read(const Program& program,
                                  std::span<const std::string_view> arguments) {
    return Reader(program, arguments).read();
}

} // namespace velmo::CommandLine
