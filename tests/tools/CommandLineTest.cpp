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
        ASSERT_TRUE(line) << line.error();
        EXPECT_EQ(Words(line->words.begin(), line->words.end()), words);
    }
}

TEST(CommandLine, OptionsHaveTheirValues) {
    const auto line = read(program, Words{"--mac", "[1]", "run", "--floor=", "--floor=a=b", "x"});
    ASSERT_TRUE(line) << line.error();
    EXPECT_EQ(line->value("--mac"), "[1]");
    EXPECT_EQ(line->value("--floor"), "a=b");
    EXPECT_FALSE(line->has("--fast"));
    EXPECT_TRUE(read(program, Words{"run", "-h", "nonsense"})->has("--help"));
    EXPECT_EQ(read(program, Words{})->verb->name, "show");
}

TEST(CommandLine, RefusesWrongWordsInOneHelpfulLine) {
    for (const auto& [given, error] : std::initializer_list<std::pair<Words, std::string_view>>{
             {{"rub"}, "unknown verb 'rub'; there are run, show and move"},
             {{"--fats"}, "unknown option '--fats'; see tool --help"},
             {{"run", "-l"}, "unknown option '-l'; see tool run --help"},
             {{"run", "--floor"}, "--floor needs a value: --floor PERCENT"},
             {{"run", "--fast=1"}, "--fast takes no value"},
             {{"run", "--"}, "a command is missing behind --; see tool run --help"},
             {{"show", "--fast"}, "unknown option '--fast'; see tool show --help"},
             {{"show", "x"}, "unexpected word 'x'; see tool show --help"},
             {{"show", "--"}, "unknown option '--'; see tool show --help"},
             {{"move", "a", "b", "c"}, "unexpected word 'c'; see tool move --help"}}) {
        const auto line = read(program, given);
        ASSERT_FALSE(line) << error;
        EXPECT_EQ(line.error(), error);
    }
}

} // namespace
} // namespace velmo::CommandLine
