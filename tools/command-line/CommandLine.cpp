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

/// Reads a command line word by word, up to the first fault.
class Reader {
public:
    Reader(const Program& program, std::span<const std::string_view> arguments)
        : program_(program), rest_(arguments), line_{.verb = &verbNamed(program.defaultVerb)} {}

    std::expected<Line, std::string> read() {
        while (!rest_.empty() && error_.empty() && !wantsHelp()) {
            const std::string_view word = take();
            if (word == endOfOptions && line_.verb->operands != Operands::none) {
                if (rest_.empty() && line_.verb->operands == Operands::command)
                    error_ = "a command is missing behind --; see " + seeHelp();
                takeWords();
                break;
            }
            if (word.size() > 1 && word.starts_with('-'))
                takeOption(word);
            else if (!line_.namesVerb && !program_.verbs.front().name.empty())
                takeVerb(word);
            else
                takeOperand(word);
        }
        if (wantsHelp())
            return std::move(line_);
        if (error_.empty() && line_.verb == &none)
            error_ = "a verb is missing; see " + seeHelp();
        if (!error_.empty())
            return std::unexpected(std::move(error_));
        return std::move(line_);
    }

private:
    /// The verb of a line that does not name one yet, if the program has no default.
    static constexpr Verb none{};

    [[nodiscard]] const Verb& verbNamed(std::string_view name) const {
        const auto found = std::ranges::find(program_.verbs, name, &Verb::name);
        return found == program_.verbs.end() ? none : *found;
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
            error_ = "unknown option " + quoted(word) + "; see " + seeHelp();
            return;
        }
        const bool hasValue = equals != std::string_view::npos;
        if (option->value.empty() && hasValue)
            error_ = std::string(name) + " takes no value";
        else if (!option->value.empty() && !hasValue && rest_.empty())
            error_ = std::string(name) + " needs a value: " + std::string(name) + " "
                     + std::string(option->value);
        else if (option->value.empty())
            line_.given.push_back({option, ""});
        else
            line_.given.push_back(
                {option, std::string(hasValue ? word.substr(equals + 1) : take())});
    }

    [[nodiscard]] const Option* known(std::string_view name) const {
        for (const Option* common : {&helpOption, &versionOption}) {
            if (common->name == name)
                return common;
        }
        const Option* const option = optionNamed(program_.options, name);
        return option ? option : optionNamed(line_.verb->options, name);
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
            error_ = "unknown verb " + quoted(word) + "; there are " + verbNames();
            return;
        }
        for (const auto& given : line_.given) {
            if (!optionNamed(program_.options, given.option->name)
                && !optionNamed(verb.options, given.option->name))
                error_ =
                    std::string(given.option->name) + " is no option of " + std::string(verb.name);
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
            error_ = "unexpected word " + quoted(word) + "; see " + seeHelp();
        }
    }

    void takeWords() {
        if (line_.verb->operands == Operands::command) {
            line_.words.insert(line_.words.end(), rest_.begin(), rest_.end());
            rest_ = {};
        } else {
            while (!rest_.empty() && error_.empty())
                takeOperand(take());
        }
    }

    const Program& program_;
    std::span<const std::string_view> rest_;
    Line line_;
    std::string error_;
};

} // namespace

std::expected<Line, std::string> read(const Program& program,
                                      std::span<const std::string_view> arguments) {
    return Reader(program, arguments).read();
}

} // namespace velmo::CommandLine
