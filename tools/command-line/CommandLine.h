#pragma once

#include <array>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The description of a program's command line in tables. The parser, the help, the manual page and
/// the completions (`tools/pages`) all read the same tables.
///
/// If a verb runs a command, options must come before it. The command begins at the first word that
/// is not an option, or after "--". From there on every word belongs to the command, byte for byte,
/// as with `env` and `nice`.
namespace velmo::CommandLine {

struct Option {
    std::string_view name; ///< with its dashes: "--floor"
    /// The name of the option's value in help, "PERCENT"; empty for an option without a value.
    /// Shells complete "FILE" and "FOLDER" as such, and the words in lower case of "on|off".
    std::string_view value{};
    std::string_view help; ///< without a full stop
};

/// What follows a verb besides its options.
enum class Operands {
    none,
    words,   ///< at most `Verb::maxWords`
    command, ///< a program and its arguments, untouched
};

struct Verb {
    std::string_view name; ///< empty for a program without verbs
    std::string_view help;
    std::span<const Option> options = {};
    Operands operands = Operands::none;
    std::string_view operandNames = {}; ///< as in "[[--] COMMAND [ARGUMENT...]]"
    std::size_t maxWords = 0;
};

/// A heading and its paragraphs, for help and the manual page.
struct Section {
    std::string_view heading;
    std::string_view text; ///< printed line by line; an empty line separates paragraphs
};

struct Program {
    std::string_view name;
    std::string_view help;
    std::span<const Option> options; ///< accepted in any place before a command
    std::span<const Verb> verbs;
    std::string_view defaultVerb; ///< for a line without a verb; empty: a verb is required
    std::span<const Section> sections;
    std::string_view version;

    [[nodiscard]] bool hasVerbs() const { return !verbs.front().name.empty(); }
};

/// The options that every program has.
inline constexpr Option helpOption{.name = "--help",
                                   .help = "print this help, or that of the verb before it"};
inline constexpr Option versionOption{.name = "--version", .help = "print the version"};
inline constexpr std::array ownOptions{helpOption, versionOption};

struct Line {
    struct Given {
        const Option* option;
        std::string value;
    };

    const Verb* verb = nullptr;
    bool namesVerb = false; ///< false: the verb is the program's default, or its only one
    std::vector<Given> given{};
    std::vector<std::string> words{}; ///< operands, or the command, as given

    [[nodiscard]] bool has(std::string_view option) const { return value(option).has_value(); }

    /// Returns the value of the option, or "" for an option without a value; the last value if the
    /// option is given several times. Absent if the option is not given.
    [[nodiscard]] std::optional<std::string_view> value(std::string_view option) const;
};

/// The first mistake in a command line.
struct Mistake {
    std::string text; ///< what is wrong and what would be right, without the program's name
    bool namesCommand = false; ///< the line, as far as it can be read, asks for a command
};

/// Reads the arguments, without the program's own name. "-h" means "--help". Reading stops at
/// "--help" and "--version", so that a mistake behind them does not matter.
std::expected<Line, Mistake> read(const Program& program,
                                  std::span<const std::string_view> arguments);

/// Returns the help of the program, or of the verb if the program has several.
std::string helpText(const Program& program, const Verb* verb = nullptr);

/// Returns the text that "--help" or "--version" prints; absent if the line has neither.
std::optional<std::string> ownPage(const Program& program, const Line& line);

/// Returns how the verb is used: "velmo-power hold [OPTION...] [[--] COMMAND [ARGUMENT...]]".
std::string usageOf(const Program& program, const Verb& verb);

} // namespace velmo::CommandLine
