#include "platform/host/DevTerminalHost.h"

#include "tests/platform/host/HomeOnDisk.h"

namespace velmo {
namespace {

namespace fs = std::filesystem;

class DevTerminalOnDisk : public HomeOnDisk {};

TEST_F(DevTerminalOnDisk, AllowsFoldersByWhereTheyLead) {
    for (const fs::path& from : {home, root / "link"}) {
        expectVerdicts(
            [&](const std::string& path) {
                return DevTerminal::isAllowedFolder(at(path), from.string());
            },
            words(
                "~/dev/app ~/dev/short @/dev ~/dev/new/one ~/dev/short/new"), // some not there yet
            words("~ @ ~/dev/keys ~/dev/keys/new ~/dev/out ~/dev/out/new ~/dev/loop ~/dev/dangling "
                  "~/dev/dangling/new ~/dev/text/new ~/dev/new/../../.ssh ~/Library/new dev/app"));
    }
    for (const char* from : {"", "/"})
        EXPECT_FALSE(DevTerminal::isAllowedFolder(at("~/dev"), from)) << from;
}

TEST_F(DevTerminalOnDisk, ResolvesAsFarAsThePathExists) {
    EXPECT_EQ(DevTerminal::resolveOnDisk("/"), "/");
    EXPECT_EQ(DevTerminal::resolveOnDisk(at("@//dev/short/a//b/")), at("~/dev/app/a/b"));
    EXPECT_FALSE(DevTerminal::resolveOnDisk(at("~/missing/..")));
    EXPECT_FALSE(DevTerminal::resolveOnDisk(home.string() + '\0'));
}

TEST_F(DevTerminalOnDisk, TrustsExecutablesThatOtherUsersCannotReplace) {
    // Every user may write to the folder of temporary folders.
    ASSERT_TRUE(DevTerminal::isWorldWritable(root.parent_path().string()));
    fs::copy_file("/bin/sh", root / "program");
    expectVerdicts(DevTerminal::isTrustedExecutable, {"/bin/sh"},
                   {"", "sh", "/bin", "/bin/", "/bin/sh/", "/bin/../bin/sh", "/etc/passwd",
                    "/bin/missing", (root / "program").string(), (root / "claude").string()});
}

TEST_F(DevTerminalOnDisk, KnowsItsOwnExecutable) {
    EXPECT_TRUE(DevTerminal::ownExecutable()->ends_with("/platform_terminal_tests"));
}

} // namespace
} // namespace velmo
