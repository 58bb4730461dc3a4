#include "core/probes/FirewallProbe.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using testing::ElementsAre;
using namespace std::string_literals;
using Words = std::vector<std::string>;

std::string times(std::size_t count, const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

TEST(FirewallProbe, TakesOneAbsolutePathWithoutAStepUp) {
    for (const std::string& valid :
         {"/Applications/Velmo Host.app"s, "/"s, "//"s, "/a/..b"s, "/a/..."s, "/a../b"s, "/~"s,
          "/" + times(1023, "x"), "/" + times(1023, "e\u0301"), "/\u0085\u2028"s})
        EXPECT_EQ(FirewallProbe::parseArgs(Words{valid}), valid);

    for (const std::string& refused :
         {""s, "Velmo.app"s, " /a"s, "/a/../b"s, "/.."s, "/a/.."s, "/../a"s,
          // A mark that melts into the slash before it hides no step.
          "/a/../\u0301b"s, "/a\tb"s, "/a\x1B"s, "/a\x7F"s, "/a\0"s, "/a\n"s, "/\xFF"s,
          "/" + times(1024, "x"), "/" + times(1024, "e\u0301")})
        EXPECT_FALSE(FirewallProbe::parseArgs(Words{refused})) << refused;

    EXPECT_FALSE(FirewallProbe::parseArgs({}));
    EXPECT_FALSE(FirewallProbe::parseArgs(Words{"/a", ""}));
    EXPECT_FALSE(FirewallProbe::parseArgs(Words{"/a", "/a"}));
}

TEST(FirewallProbe, HandsThePathOverAsAnArgumentOfItsOwn) {
    EXPECT_THAT(FirewallProbe::invocations("/a b'$(c).app"),
                ElementsAre(Words{"--getglobalstate"}, Words{"--getblockall"},
                            Words{"--getappblocked", "/a b'$(c).app"}));
}

TEST(FirewallProbe, TrimsAnOutputOnceThenCutsIt) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {" \t\r\n\u00A0\u3000\u2028\u0085", ""},
        {"\n Firewall is enabled. (State = 1) \n", "Firewall is enabled. (State = 1)"},
        {"a\n\nb", "a\n\nb"},
        {"\x1F a \u200B", "\x1F a \u200B"},
        {"\n\n" + times(500, "x") + "\n", times(400, "x")},
        {times(399, "x") + " y", times(399, "x") + " "},
        {"x" + times(500, "\r\n") + "x", "x" + times(399, "\r\n")},
        {times(401, "👍🏽"), times(400, "👍🏽")},
        {" \xFF " + times(400, "x"), "\uFFFD " + times(398, "x")},
    };
    for (const auto& [output, cleaned] : cases)
        EXPECT_EQ(FirewallProbe::clean(output), cleaned);
    EXPECT_EQ(encodeJson(FirewallProbe::Report{.global = "on", .blockAll = "\n", .app = "/a"}),
              R"({"app":"\/a","blockAll":"\n","global":"on"})");
}

} // namespace
} // namespace velmo
