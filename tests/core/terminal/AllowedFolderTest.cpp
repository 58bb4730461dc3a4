#include "core/terminal/AllowedFolder.h"

#include "tests/Texts.h"

namespace velmo {
namespace {

using namespace DevTerminal;

bool isAllowed(const std::string& path) {
    return isAllowedResolvedFolder(path, "/Users/me");
}

TEST(AllowedFolder, LiesStrictlyInsideHome) {
    // Denied are also the names that a disk without letter case takes for the same: ſ, Kelvin sign.
    expectVerdicts(isAllowed, words(R"(/Users/me/dev /Users/me/dev/app/ /users/ME/dev/app
                       /Users/me/dev/library /Users/me/.github /Users/me/.npm-global/x)"),
                   joined({"", "/Users/me/\xFF"}, words(R"(
                       /Users/me /Users/me/ /Users/meagain/dev /Users / Users/me/dev /Users/me/dev/..
                       /Users/me/./dev /Users/me/dev/../../x /Users/me/.ſsh /Users/me/.docKer)")));
    // Lower case of another length; bytes that would be repaired alike; homes that are none.
    EXPECT_TRUE(isAllowedResolvedFolder("/Users/\u0130/ı/app", "/Users/i\u0307/ı"));
    EXPECT_TRUE(isAllowedResolvedFolder("/a/b", "/a/"));
    EXPECT_FALSE(isAllowedResolvedFolder("/Users/\xFE/dev", "/Users/\xFF"));
    for (const char* home : {"/", "", "dev"})
        EXPECT_FALSE(isAllowedResolvedFolder("/dev/app", home)) << home;
}

TEST(AllowedFolder, IsNeitherADeniedOneNorInsideOne) {
    const std::string home = "/Users/me/";
    for (const std::string_view denied : deniedTop) {
        const std::string name(denied);
        EXPECT_FALSE(isAllowed(home + name) || isAllowed(home + name + "/x")) << name;
        EXPECT_EQ(isAllowed(home + "dev/" + name), !Text::isOneOf(name, deniedAnywhere)) << name;
        EXPECT_TRUE(isAllowed(home + name + "x")) << name;
    }
    for (const std::string_view name : deniedAnywhere)
        EXPECT_FALSE(isAllowed(home + "dev/" + std::string(name) + "/x")) << name;
    EXPECT_FALSE(isAllowed("/Users/me/LIBRARY") || isAllowed("/Users/me/dev/.Git"));
}

TEST(AllowedFolder, IsResolvedUnlessItHasDots) {
    const auto resolve = [](std::string_view path) {
        return std::optional<std::string>(path == "/home" ? "/Users" : "/Users/dev");
    };
    EXPECT_TRUE(isAllowedFolder("/home/x", "/home", resolve));
    EXPECT_FALSE(isAllowedFolder("/home/./x", "/home", resolve));
    EXPECT_FALSE(isAllowedFolder("/home/x/../y", "/home", resolve));
}

} // namespace
} // namespace velmo
