#include "core/apps/ForceQuitPolicy.h"
#include "core/apps/TargetRequest.h"
#include "tests/Texts.h"

namespace velmo {
namespace {

using namespace ForceQuitPolicy;

/// Expects the verdict on a process, given by its bundle identifier, bundle path and executable
/// path. "-" stands for an absent text, "." for an empty one.
void expectVerdict(Verdict expected, const std::string& process, std::int32_t pid = 9) {
    const std::int32_t ownPids[] = {43, 44};
    const auto text = [all = words(process)](std::size_t i) {
        return all[i] == "-" ? std::nullopt : std::optional(all[i] == "." ? "" : all[i]);
    };
    Process known{.pid = pid, .bundleId = text(0), .bundlePath = text(1)};
    known.executablePath = text(2);
    EXPECT_EQ(verdict(known, ownPids), expected) << pid << ' ' << process;
}

TEST(ForceQuitPolicy, RefusesTheKernelLaunchdAndTheProductItself) {
    for (const std::int32_t pid : {-9, 0, 1, 43, 44})
        expectVerdict(refuse, "a.b /Users/me/App.app /Users/me/x", pid);
    expectVerdict(terminate, "a.b - -", 2);
    expectVerdict(refuse, "\tIO.Velmo.Helper /Users/me/App.app -");
    expectVerdict(terminate, "io.velmo /Users/me/App.app -");
}

TEST(ForceQuitPolicy, RelaunchesTheFinderOfTheSystemOnly) {
    expectVerdict(relaunch, "com.apple.finder /System/Library/CoreServices/Finder.app -");
    expectVerdict(relaunch, "\tCOM.apple.Finder /system/library/coreservices/FINDER.app /bin/sh");
    for (const char* path : {" /Users/me/Finder.app ", " - ", " . "})
        expectVerdict(terminate, std::string("com.apple.finder") + path + "/sbin/launchd");
}

TEST(ForceQuitPolicy, ProtectsIdentifiersThatTheSystemItselfUses) {
    for (const std::string& name :
         words("Loginwindow windowserver dock systemuiserver controlcenter notificationcenterui "
               "spotlight windowmanager securityagent coreservices.uiagent screensaver.engine "
               "wifi.wifiagent textinputmenuagent")) {
        const std::string id = "com.Apple." + name + "\t ";
        for (const char* paths : {"- -", ". .", "/System/X.app /Users/me/x", ". /bin/x"})
            expectVerdict(refuse, id + paths);
        for (const char* paths : {"/Users/me/X.app /usr/bin/perl", "/Users/x -", "- /Users/x"})
            expectVerdict(terminate, id + paths);
    }
}

TEST(ForceQuitPolicy, ProtectsExecutablesThatTheSystemItselfStarts) {
    for (const std::string& name :
         words("Loginwindow windowserver dock systemuiserver controlcenter notificationcenter "
               "spotlight windowmanager securityagent launchd kernel_task")) {
        for (const std::string& path : {"/USR/x/" + name, "/usr/" + name + "//"})
            expectVerdict(refuse, "com.apple.docks /Users/me/X.app " + path);
        for (const std::string& path : {"/usr/" + name + "x", "/usr/" + name + "/x", "/x/" + name})
            expectVerdict(terminate, "- - " + path);
    }
}

TEST(ForceQuitPolicy, KnowsTheFoldersOfTheSystem) {
    expectVerdicts(isSystemPath, words("/System/x /sYSTEM/ /usr/local/bin/x /bin/sh /sbin/x"),
                   {"", "/", "/System", "/Systems/x", "System/x", "/opt/usr/x", " /bin/sh"});
    EXPECT_FALSE(isSystemPath(std::nullopt));
}

TEST(ForceQuitPolicy, ComparesThePathOnlyIfTheIdentifierIsAbsent) {
    const std::string path = "/Users/me/App.app";
    EXPECT_TRUE(identityMatches(" a.B\t", "A.b ", path));
    EXPECT_TRUE(identityMatches("/users/ME/app.app", std::nullopt, path));
    EXPECT_TRUE(identityMatches(path, " ", " " + path));
    EXPECT_FALSE(identityMatches(path, "a.b", path));
    EXPECT_FALSE(identityMatches(path, std::nullopt, path + "/"));
    for (const char* other : {"", " ", "a.b"})
        EXPECT_FALSE(identityMatches(" ", other, other)) << other;
}

TEST(ForceQuitPolicy, ARecycledProcessIdentifierIsAnotherProcess) {
    EXPECT_TRUE(startMatches({}, 5) && startMatches("", {}) && startMatches("000123", 123));
    EXPECT_FALSE(startMatches("9223372036854775808", INT64_MIN));
    EXPECT_FALSE(startMatches("123", {}) || startMatches("0", 0) || startMatches("-1", -1));
    EXPECT_FALSE(startMatches("124", 123) || startMatches("+123", 123));
}

TEST(TargetRequest, ReadsAProcessAndItsExpectedIdentity) {
    const auto parse = [](const std::string& line) { return TargetRequest::parse(words(line)); };
    const std::string longest = times(1024, "e\u0301"); // user-perceived characters are counted
    EXPECT_EQ(parse("0007 \u3000/A\tb/C.app\t"),
              (TargetRequest{.pid = 7, .appId = "/A\tb/C.app", .started = {}}));
    EXPECT_EQ(parse("1 " + longest + " 00000000000000000009"),
              (TargetRequest{.pid = 1, .appId = longest, .started = "00000000000000000009"}));
    expectRefused(parse, {"", "7", "7 a 1 2", "0 a", "7 \u00A0", "7 a\u2028b", "7 \xFF",
                          "7 " + longest + "a", "7 a 1.5", "7 a 000000000000000000009"});
    EXPECT_FALSE(TargetRequest::parse(Strings{"7", "a", ""}));
}

} // namespace
} // namespace velmo
