#pragma once

#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What a program takes on its command line, told once: reading it, its help, its manual page and
/// its completions all come from the same tables.
///
/// Options stand before the words that they are no part of. A verb that runs a command ends at the
/// first word that is no option, or after "--": from there on every word is the command's, byte for
/// byte, as with `env` and `nice`.
namespace velmo::CommandLine {

struct Option {
    std::string_view name; ///< with its dashes: "--floor"
    /// What stands for its value in help, "PERCENT"; empty if it takes none.
    std::string_view value{};
    std::string_view help; ///< without a full stop
};

/// What a verb takes besides its options.
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
    std::string_view text; ///< lines as they stand; an empty one parts paragraphs
};

struct Program {
    std::string_view name;
    std::string_view help;
    std::span<const Option> options; ///< taken in any place before a command
    std::span<const Verb> verbs;
    std::string_view defaultVerb; ///< meant where none is named; empty: one must be
    std::span<const Section> sections;
    std::string_view version;
};

/// Every program has these.
inline constexpr Option helpOption{.name = "--help",
                                   .help = "print this help, or that of the verb before it"};
inline constexpr Option versionOption{.name = "--version", .help = "print the version"};

struct Line {
    struct Given {
        const Option* option;
        std::string value;
    };

    const Verb* verb = nullptr;
    bool namesVerb = false; ///< false: it is the program's default, or its only one
    std::vector<Given> given{};
    std::vector<std::string> words{}; ///< operands, or the command, as they were given

    [[nodiscard]] bool has(std::string_view option) const { return value(option).has_value(); }

    /// Returns the value of the option, "" if it takes none; of the last one if it is given several
    /// times.
    [[nodiscard]] std::optional<std::string_view> value(std::string_view option) const;
};

/// Reads the arguments, without the program's own name. The error is one line that says what is
/// wrong and what would do, without the program's name. "-h" is "--help"; where one of the two
/// options that every program has is given, what else is wrong does not matter.
std::expected<Line, std::string> read(const Program& program,
                                      std::span<const std::string_view> arguments);

/// Returns the help of the program, or of one verb where it has several.
std::string helpText(const Program& program, const Verb* verb = nullptr);

/// Returns what "--help" or "--version" prints, if the line has one of them.
std::optional<std::string> ownPage(const Program& program, const Line& line);

/// Returns the manual page, in the man macros of troff.
std::string manualPage(const Program& program);

enum class Shell { bash, zsh, fish };

/// Returns what makes the shell complete verbs and options.
std::string completion(const Program& program, Shell shell);

} // namespace velmo::CommandLine
