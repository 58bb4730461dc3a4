#include "core/apps/ForceQuitPolicy.h"
#include "core/apps/TargetRequest.h"

#include <gtest/gtest.h>

#include <vector>

namespace velmo {
namespace {

using Words = std::vector<std::string>;
using Text = std::optional<std::string>;

const Text none;
const Text app = "/Users/me/App.app";
const Text dock = "/System/Library/CoreServices/Dock.app";
const Text finder = "/System/Library/CoreServices/Finder.app";

using Paths = std::vector<std::pair<Text, Text>>; ///< of the bundle and of the executable

/// Of every process with this identifier and one of these pairs of paths.
void expectVerdict(ForceQuitPolicy::Verdict verdict, const Text& bundleId, const Paths& paths,
                   std::int32_t pid = 9) {
    const std::int32_t ownPids[] = {43, 44};
    for (const auto& [bundle, executable] : paths)
        EXPECT_EQ(ForceQuitPolicy::verdict({pid, bundleId, bundle, executable}, ownPids), verdict)
            << bundleId.value_or("-") << ' ' << bundle.value_or("-") << ' '
            << executable.value_or("-");
}

TEST(ForceQuitPolicy, RefusesWhatTheSystemAndTheHostNeed) {
    using enum ForceQuitPolicy::Verdict;
    for (const std::int32_t pid : {-9, 0, 1, 44})
        expectVerdict(refuse, "com.apple.finder", {{app, app}, {finder, none}}, pid);
    expectVerdict(terminate, "a.b", {{none, none}, {app, app}}, 2);
    expectVerdict(refuse, " IO.Velmo.Helper", {{app, app}});
    expectVerdict(terminate, "io.velmo", {{app, app}});
    expectVerdict(relaunch, "com.apple.finder", {{finder, none}, {finder, app}});
    expectVerdict(relaunch, "COM.apple.Finder\t",
                  {{"/system/library/coreservices/FINDER.app", "/bin/sh"}});
    expectVerdict(terminate, "com.apple.finder",
                  {{app, none}, {none, "/sbin/launchd"}, {"", none}});
    expectVerdict(refuse, "com.apple.Dock",
                  {{dock, none}, {dock, app}, {none, dock}, {"", "/bin/a"}});
    expectVerdict(refuse, "com.apple.dock ", {{none, none}, {"", ""}, {app, "/usr/x/Dock"}});
    expectVerdict(terminate, "com.apple.dock", {{app, none}, {none, app}, {app, "/usr/bin/perl"}});
    expectVerdict(refuse, none, {{none, "/sbin/launchd"}, {app, "/SBIN/LAUNCHD/"}});
    expectVerdict(refuse, "com.apple.docks", {{dock, "/usr/libexec/WindowServer"}});
    expectVerdict(terminate, none, {{none, "/usr/bin/perl"}, {none, "/usr/launchd.d/x"}});
    expectVerdict(terminate, none, {{none, "/Users/me/launchd"}, {none, "launchd"}, {none, ""}});
}

TEST(ForceQuitPolicy, KnowsTheFoldersOfTheSystem) {
    for (const char* path : {"/System/x", "/sYSTEM/", "/usr/local/bin/x", "/bin/sh", "/sbin/x"})
        EXPECT_TRUE(ForceQuitPolicy::isSystemPath(path)) << path;
    for (const char* path :
         {"", "/", "/System", "/Systems/x", "System/x", "/opt/usr/x", " /bin/sh"})
        EXPECT_FALSE(ForceQuitPolicy::isSystemPath(path)) << path;
    EXPECT_FALSE(ForceQuitPolicy::isSystemPath(std::nullopt));
}

TEST(ForceQuitPolicy, AnIdentifierDecidesAloneWhereThereIsOne) {
    EXPECT_TRUE(ForceQuitPolicy::identityMatches(" a.B\t", "A.b ", app));
    EXPECT_TRUE(ForceQuitPolicy::identityMatches("/users/ME/app.app", none, app));
    EXPECT_TRUE(ForceQuitPolicy::identityMatches(*app, " ", " " + *app));
    EXPECT_FALSE(ForceQuitPolicy::identityMatches(*app, "a.b", app));
    EXPECT_FALSE(ForceQuitPolicy::identityMatches(*app, none, *app + "/"));
    EXPECT_FALSE(ForceQuitPolicy::identityMatches("a.b", none, none));
    for (const auto& other : {none, Text(""), Text(" "), Text("a.b")})
        EXPECT_FALSE(ForceQuitPolicy::identityMatches(" ", other, none)) << other.value_or("-");
}

TEST(ForceQuitPolicy, ARecycledProcessIdentifierIsAnotherProcess) {
    const auto matches = ForceQuitPolicy::startMatches;
    EXPECT_TRUE(matches({}, 5) && matches("", {}) && matches("00000000000000000123", 123));
    EXPECT_TRUE(matches("9223372036854775807", INT64_MAX));
    EXPECT_FALSE(matches("123", {}) || matches("0", {}) || matches("0", 0) || matches("-1", -1));
    EXPECT_FALSE(matches("9223372036854775808", INT64_MAX)
                 || matches("9223372036854775808", INT64_MIN));
    for (const char* expected : {"124", "+123", "123 ", "1e2", "\u0661\u0662\u0663"})
        EXPECT_FALSE(matches(expected, 123)) << expected;
}

TEST(TargetRequest, NamesAProcessAndWhoItShouldBe) {
    std::string longest; // user-perceived characters are counted
    for (int i = 0; i < 1024; ++i)
        longest += "e\u0301";
    const std::pair<Words, TargetRequest> accepted[] = {
        {{"2147483647", "\u3000a.b\t"}, {2147483647, "a.b", {}}},
        {{"0007", "/A b/C.app", "123"}, {7, "/A b/C.app", "123"}},
        {{"7", "a\tb\x7F", "99999999999999999999"}, {7, "a\tb\x7F", "99999999999999999999"}},
        {{"1", longest}, {1, longest, {}}},
    };
    for (const auto& [arguments, request] : accepted)
        EXPECT_EQ(TargetRequest::parse(arguments), request) << testing::PrintToString(arguments);

    std::vector<Words> refused = {{}, {"7"}, {"7", "a", "1", "2"}, {"7", longest + "a"}};
    for (const char* pid : {"", "0", "-7", "+7", "2147483648", "4294967303"})
        refused.push_back({pid, "a"});
    for (const char* appId : {"", " \t\u00A0", "a\n", "\va", "a\fb", "a\rb", "a\u0085b", "a\u2028b",
                              "a\u2029b", "\xFF"})
        refused.push_back({"7", appId});
    for (const char* started : {"", "-", "1.5", "1 ", "000000000000000000123"})
        refused.push_back({"7", "a", started});
    for (const Words& arguments : refused)
        EXPECT_FALSE(TargetRequest::parse(arguments)) << testing::PrintToString(arguments);
}

} // namespace
} // namespace velmo
