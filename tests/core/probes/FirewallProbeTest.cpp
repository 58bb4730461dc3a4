#include "core/probes/FirewallProbe.h"

#include "tests/Texts.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using testing::ElementsAre;
using namespace std::string_literals;

TEST(FirewallProbe, TakesOneAbsolutePathWithoutAStepUp) {
    const auto parse = [](const std::string& path) {
        const auto parsed = FirewallProbe::parseArgs(Strings{path});
        EXPECT_EQ(parsed.value_or(path), path);
        return parsed;
    };
    expectVerdicts(parse,
                   {"/Velmo Host.app", "/", "//", "/a/..b", "/a/...", "/a../b", "/~",
                    "/" + times(1023, "x"), "/" + times(1023, "e\u0301"), "/\u0085\u2028"},
                   {"", "Velmo.app", " /a", "/a/../b", "/..", "/a/..", "/../a",
                    // A mark that joins the slash before it into one character hides no step.
                    "/a/../\u0301b", "/a\tb", "/a\x1B", "/a\x7F", "/a\0"s, "/a\n", "/\xFF",
                    "/" + times(1024, "x"), "/" + times(1024, "e\u0301")});
    EXPECT_FALSE(FirewallProbe::parseArgs({}));
    EXPECT_FALSE(FirewallProbe::parseArgs(Strings{"/a", "/a"}));
}

TEST(FirewallProbe, HandsThePathOverAsAnArgumentOfItsOwn) {
    EXPECT_THAT(FirewallProbe::invocations("/a b'$(c).app"),
                ElementsAre(Strings{"--getglobalstate"}, Strings{"--getblockall"},
                            Strings{"--getappblocked", "/a b'$(c).app"}));
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
