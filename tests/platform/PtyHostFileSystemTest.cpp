#include "platform/posix/PtyHostFileSystem.h"

#include "tests/platform/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

namespace velmo {
namespace {

namespace fs = std::filesystem;
using Pty::Environment;

class PtyOnDisk : public testing::Test {
protected:
    PtyOnDisk() {
        fs::create_directories(home / "dev" / "app");
        fs::create_directories(home / ".ssh");
        fs::create_directory_symlink(home / ".ssh", home / "dev" / "keys");
        fs::create_directory_symlink(home, root / "link");
        std::ofstream(home / "script") << "#!/bin/sh\n";
        ::chmod((home / "script").c_str(), 0755);
        std::ofstream(home / "text") << "text";
        ::chmod((home / "text").c_str(), 0644);
        fs::create_symlink(home / "script", root / "claude");
        fs::create_symlink(root / "nowhere", root / "dangling");
    }

    std::optional<SpawnRequest> shellIn(const fs::path& folder) const {
        const std::vector<std::string> words{
            "--cwd", folder.string(), "--cols", "80", "--rows", "24", "--", "/bin/sh", "-l"};
        return Pty::parseSpawn(words, environment, host);
    }

    TemporaryFolder temporary;
    fs::path root = fs::canonical(temporary.path());
    fs::path home = root / "home";
    Environment environment{{"HOME", (root / "link").string()}};
    Pty::HostFileSystem host;
};

TEST_F(PtyOnDisk, ResolvesLinks) {
    EXPECT_EQ(host.realpath((root / "link" / "dev" / "..").string()), home.string());
    EXPECT_EQ(host.realpath((root / "claude").string()), (home / "script").string());
    for (const std::string& path :
         {std::string(), (root / "dangling").string(), (root / "missing").string(),
          (home / "text" / "x").string(), home.string() + std::string("\0x", 2)})
        EXPECT_FALSE(host.realpath(path)) << testing::PrintToString(path);
}

TEST_F(PtyOnDisk, TellsFoldersFromPrograms) {
    struct Case {
        fs::path path;
        bool folder, program;
    };

    const Case cases[] = {
        {home, true, false},
        {root / "link", true, false},
        {home / "script", false, true},
        {root / "claude", false, true},
        {home / "text", false, false},
        {root / "dangling", false, false},
        {root / "missing", false, false},
        {"", false, false},
    };
    for (const auto& [path, folder, program] : cases) {
        EXPECT_EQ(host.isDirectory(path.string()), folder) << path;
        EXPECT_EQ(Pty::isDirectory(path.string()), folder) << path;
        EXPECT_EQ(host.isExecutable(path.string()), program) << path;
        EXPECT_EQ(Pty::isExecutableFile(path.string()), program) << path;
    }
}

TEST_F(PtyOnDisk, KnowsWhoElseMayWrite) {
    EXPECT_FALSE(host.isWorldWritable("/"));
    EXPECT_FALSE(host.isWorldWritable(home.string()));
    EXPECT_FALSE(host.isWorldWritable((root / "link").string())); // not the link's own 0777
    EXPECT_TRUE(host.isWorldWritable((root / "missing").string()));
    EXPECT_TRUE(host.isWorldWritable((root / "dangling").string()));
    for (const mode_t mode : {0777U, 01777U, 0702U}) {
        ::chmod(home.c_str(), mode);
        EXPECT_TRUE(host.isWorldWritable(home.string())) << std::oct << mode;
        EXPECT_TRUE(host.isWorldWritable((root / "link").string())) << std::oct << mode;
    }
    ::chmod(home.c_str(), 0775);
    EXPECT_FALSE(host.isWorldWritable(home.string()));
}

TEST_F(PtyOnDisk, HomeIsTheEnvironmentsOrTheUsers) {
    EXPECT_EQ(host.home({{"HOME", "/h"}}), "/h");
    EXPECT_EQ(host.home({{"HOME", ""}}), "");
    EXPECT_TRUE(host.home({}).value_or("/").starts_with('/'));
}

TEST_F(PtyOnDisk, SpawnsARealShellInARealFolder) {
    const auto program = fs::canonical("/bin/sh").string();
    EXPECT_EQ(shellIn(root / "link" / "dev" / "app"),
              (SpawnRequest{.cwd = (home / "dev" / "app").string(),
                            .cols = 80,
                            .rows = 24,
                            .program = program,
                            .argv = {"/bin/sh", "-l"}}));
    EXPECT_TRUE(shellIn(home));
    for (const fs::path& folder : {home / "dev" / "keys", home / "missing", home / "text", root,
                                   root / "dangling", fs::path("/")})
        EXPECT_FALSE(shellIn(folder)) << folder;
    environment["HOME"] = "";
    EXPECT_FALSE(shellIn(home));
}

TEST_F(PtyOnDisk, TrustsTheSystemsFoldersAndNotTheTemporaryOnes) {
    EXPECT_TRUE(Pty::isTrustedProgram("/bin/sh", "/bin/sh", environment, host));
    environment["TMPDIR"] = root.string();
    EXPECT_TRUE(Pty::isTrustedProgram("/bin/sh", "/bin/sh", environment, host));
    const std::string linked = (root / "claude").string();
    EXPECT_FALSE(Pty::isTrustedProgram(linked, "/bin/sh", environment, host));
    EXPECT_FALSE(Pty::isTrustedProgram("/bin/sh", linked, environment, host));
    environment["TMPDIR"] = "/bin";
    EXPECT_FALSE(Pty::isTrustedProgram("/bin/sh", fs::canonical("/bin").string() + "/sh",
                                       environment, host));
}

} // namespace
} // namespace velmo
