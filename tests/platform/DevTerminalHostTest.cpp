#include "platform/posix/DevTerminalHost.h"

#include "tests/platform/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

namespace velmo {
namespace {

namespace fs = std::filesystem;

class DevTerminalOnDisk : public testing::Test {
protected:
    DevTerminalOnDisk() {
        fs::create_directories(home / "dev" / "app");
        fs::create_directories(home / ".ssh");
        fs::create_directory_symlink(home / ".ssh", home / "dev" / "keys");
        fs::create_directory_symlink("/etc", home / "dev" / "out");
        fs::create_directory_symlink(home / "dev" / "app", home / "dev" / "short");
        fs::create_directory_symlink(home / "dev" / "loop", home / "dev" / "loop");
        fs::create_directory_symlink(home / ".ssh" / "later", home / "dev" / "dangling");
        fs::create_directory_symlink(home, root / "link");
        std::ofstream(home / "dev" / "file") << "x";
    }

    TemporaryFolder temporary;
    fs::path root = fs::canonical(temporary.path());
    fs::path home = root / "home";
};

TEST_F(DevTerminalOnDisk, AllowsFoldersByWhereTheyLead) {
    const std::pair<fs::path, bool> cases[] = {
        {home / "dev" / "app", true},
        {home / "dev" / "short", true},
        {root / "link" / "dev", true},
        {home / "dev" / "new" / "one", true}, // not there yet
        {home / "dev" / "short" / "new", true},
        {home, false},
        {root / "link", false},
        {home / "dev" / "keys", false},
        {home / "dev" / "keys" / "new", false},
        {home / "dev" / "out", false},
        {home / "dev" / "out" / "new", false},
        {home / "dev" / "loop", false},
        {home / "dev" / "dangling", false},
        {home / "dev" / "dangling" / "new", false},
        {home / "dev" / "file" / "new", false},
        {home / "dev" / "new" / ".." / ".." / ".ssh", false},
        {home / "Library" / "new", false},
        {"dev/app", false},
        {"", false},
    };
    for (const fs::path& from : {home, root / "link"}) {
        for (const auto& [path, allowed] : cases)
            EXPECT_EQ(DevTerminal::isAllowedFolder(path.string(), from.string()), allowed)
                << path << " in " << from;
    }
    EXPECT_FALSE(DevTerminal::isAllowedFolder((home / "dev").string(), ""));
    EXPECT_FALSE(DevTerminal::isAllowedFolder((home / "dev").string(), "/"));
}

TEST_F(DevTerminalOnDisk, ResolvesAsFarAsThePathExists) {
    EXPECT_EQ(DevTerminal::resolveOnDisk("/"), "/");
    EXPECT_EQ(DevTerminal::resolveOnDisk((root / "link//dev/short/a//b/").string()),
              (home / "dev/app/a/b").string());
    EXPECT_FALSE(DevTerminal::resolveOnDisk((home / "missing" / "..").string()));
    EXPECT_FALSE(DevTerminal::resolveOnDisk(home.string() + std::string("\0", 1)));
}

TEST_F(DevTerminalOnDisk, TrustsExecutablesThatNobodyElseCouldReplace) {
    EXPECT_TRUE(DevTerminal::isTrustedExecutable("/bin/sh"));
    for (const char* path :
         {"", "sh", "/bin", "/bin/", "/bin/sh/", "/bin/../bin/sh", "/etc/passwd", "/bin/missing"})
        EXPECT_FALSE(DevTerminal::isTrustedExecutable(path)) << path;
    // The folder of temporary folders is everybody's.
    ASSERT_TRUE(DevTerminal::isWorldWritable(root.parent_path().string()));
    const fs::path program = home / "program";
    fs::copy_file("/bin/sh", program);
    fs::create_symlink("/bin/sh", home / "link");
    EXPECT_FALSE(DevTerminal::isTrustedExecutable(program.string()));
    EXPECT_FALSE(DevTerminal::isTrustedExecutable((home / "link").string()));
}

TEST_F(DevTerminalOnDisk, KnowsItsOwnExecutable) {
    const auto own = DevTerminal::ownExecutable().value_or("");
    EXPECT_TRUE(own.ends_with("/platform_terminal_tests")) << own;
    EXPECT_EQ(::access(own.c_str(), X_OK), 0);
}

} // namespace
} // namespace velmo
