#include "tools/command-line/CommandLine.h"

#include <gmock/gmock.h>

namespace velmo::CommandLine {
namespace {

using Words = std::vector<std::string_view>;
constexpr auto common =
    std::to_array<Option>({{.name = "--mac", .value = "FOLDER", .help = "the Mac"}});
constexpr auto runOptions = std::to_array<Option>(
    {{.name = "--floor", .value = "PERCENT", .help = "it ends"}, {.name = "--fast", .help = "f"}});
constexpr auto verbs = std::to_array<Verb>(
    {{.name = "run", .help = "run it", .options = runOptions, .operands = Operands::command},
     {.name = "show", .help = "show it"},
     {.name = "move", .help = "move it", .operands = Operands::words, .maxWords = 2}});
constexpr Program program{.name = "tool",
                          .help = "does it",
                          .options = common,
                          .verbs = verbs,
                          .defaultVerb = "show",
                          .sections = {},
                          .version = "1"};

TEST(CommandLine, LeavesTheCommandsWordsToTheCommand) {
    for (const auto& [given, words] : std::initializer_list<std::pair<Words, Words>>{
             {{"run", "ls", "-l"}, {"ls", "-l"}},
             {{"run", "--", "ls", "--fast"}, {"ls", "--fast"}},
             {{"run", "--fast", "--", "--fast"}, {"--fast"}},
             {{"run", "--floor", "--", "x", "--", "--mac", "-h"}, {"x", "--", "--mac", "-h"}},
             {{"--mac", "run", "run", "run"}, {"run"}},
             {{"run", "-", "--fast"}, {"-", "--fast"}},
             {{"run", "", "--fast"}, {"", "--fast"}},
             {{"move", "a", "--mac", "m", "b"}, {"a", "b"}},
             {{"move", "--", "--mac", "-h"}, {"--mac", "-h"}}}) {
        const auto line = read(program, given);
        ASSERT_TRUE(line) << line.error().text;
        EXPECT_EQ(Words(line->words.begin(), line->words.end()), words);
    }
}

TEST(CommandLine, OptionsHaveTheirValues) {
    const auto line = read(program, Words{"--mac", "[1]", "run", "--floor=", "--floor=a=b", "x"});
    ASSERT_TRUE(line) << line.error().text;
    EXPECT_EQ(line->value("--mac"), "[1]");
    EXPECT_EQ(line->value("--floor"), "a=b");
    EXPECT_FALSE(line->has("--fast"));
    EXPECT_TRUE(read(program, Words{"run", "-h", "nonsense"})->has("--help"));
    EXPECT_EQ(read(program, Words{})->verb->name, "show");
}

TEST(CommandLine, RefusesWrongWordsInOneHelpfulLine) {
    struct Case {
        Words given;
        std::string_view error;
        bool namesCommand = false;
    };

    for (const auto& [given, error, namesCommand] : {
             Case{{"rub"}, "unknown verb 'rub'; there are run, show and move"},
             Case{{"rub", "run", "ls"}, "unknown verb 'rub'; there are run, show and move", true},
             Case{{"--fats"}, "unknown option '--fats'; see tool --help"},
             Case{{"--fats", "run", "ls"}, "unknown option '--fats'; see tool --help", true},
             Case{{"--fats", "--help"}, "unknown option '--fats'; see tool --help"},
             Case{{"run", "-l"}, "unknown option '-l'; see tool run --help"},
             Case{{"run", "-l", "--floor", "ls"}, "unknown option '-l'; see tool run --help"},
             Case{{"run", "-l", "--", "-k"}, "unknown option '-l'; see tool run --help", true},
             Case{{"run", "--floor"}, "--floor needs a value: --floor PERCENT"},
             Case{{"run", "--fast=1"}, "--fast takes no value"},
             Case{{"run", "--fast=1", "--fats", "ls"}, "--fast takes no value", true},
             Case{{"run", "--"}, "a command is missing behind --; see tool run --help", true},
             Case{{"--fast", "show"}, "unknown option '--fast'; see tool --help"},
             Case{{"show", "--fast"}, "unknown option '--fast'; see tool show --help"},
             Case{{"show", "x"}, "unexpected word 'x'; see tool show --help"},
             Case{{"show", "--"}, "unknown option '--'; see tool show --help"},
             Case{{"move", "a", "b", "c"}, "unexpected word 'c'; see tool move --help"},
             Case{{"move", "--", "b", "c", "d"}, "unexpected word 'd'; see tool move --help"},
         }) {
        const auto line = read(program, given);
        ASSERT_FALSE(line) << error;
        EXPECT_EQ(line.error().text, error);
        EXPECT_EQ(line.error().namesCommand, namesCommand) << error;
    }
}

} // namespace
} // namespace velmo::CommandLine
