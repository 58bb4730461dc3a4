#include "platform/host/PtyHostFileSystem.h"

#include "tests/platform/host/HomeOnDisk.h"

#include <sys/stat.h>

namespace velmo {
namespace {

namespace fs = std::filesystem;

class PtyOnDisk : public HomeOnDisk {
protected:
    Pty::Environment environment{{"HOME", at("@")}};
    Pty::HostFileSystem host;
};

TEST_F(PtyOnDisk, ResolvesLinks) {
    EXPECT_EQ(host.realpath(at("@/dev/..")), home.string());
    EXPECT_EQ(host.realpath((root / "claude").string()), fs::canonical("/bin/sh").string());
    expectRefused([this](const std::string& path) { return host.realpath(path); },
                  {"", at("~/dev/dangling"), at("~/missing"), at("~/dev/text/x"), at("~") + '\0'});
}

TEST_F(PtyOnDisk, TellsFoldersFromPrograms) {
    for (const std::string path :
         {"~", "@", "/bin/sh", "~/../claude", "~/dev/text", "~/dev/dangling", "~/missing", ""}) {
        const bool isFolder = path == "~" || path == "@";
        const bool isProgram = path == "/bin/sh" || path == "~/../claude";
        EXPECT_EQ(host.isDirectory(at(path)), isFolder) << path;
        EXPECT_EQ(Pty::isDirectory(at(path)), isFolder) << path;
        EXPECT_EQ(host.isExecutable(at(path)), isProgram) << path;
        EXPECT_EQ(Pty::isExecutableFile(at(path)), isProgram) << path;
    }
}

TEST_F(PtyOnDisk, KnowsWhoElseMayWrite) {
    for (const auto mode : std::initializer_list<mode_t>{0755, 0775, 0777, 01777, 0702}) {
        ::chmod(home.c_str(), mode);
        for (const char* path : {"~", "@"}) // a link's own mode is always 0777
            EXPECT_EQ(host.isWorldWritable(at(path)), (mode & 0002U) != 0) << path << ", " << mode;
    }
    EXPECT_FALSE(host.isWorldWritable("/"));
    EXPECT_TRUE(host.isWorldWritable(at("~/missing"))
                && host.isWorldWritable(at("~/dev/dangling")));
}

TEST_F(PtyOnDisk, TakesHomeFromTheEnvironmentElseTheUserRecord) {
    EXPECT_EQ(host.home({{"HOME", "/h"}}), "/h");
    EXPECT_EQ(host.home({{"HOME", ""}}), "");
    EXPECT_TRUE(host.home({}).value_or("/").starts_with('/'));
}

TEST_F(PtyOnDisk, SpawnsARealShellInARealFolder) {
    const auto shellIn = [this](const std::string& folder) {
        return Pty::parseSpawn(words("--cols 80 --rows 24 --cwd " + at(folder) + " -- /bin/sh -l"),
                               environment, host);
    };
    EXPECT_EQ(shellIn("@/dev/app"),
              (SpawnRequest{
                  at("~/dev/app"), 80, 24, fs::canonical("/bin/sh").string(), {"/bin/sh", "-l"}}));
    expectVerdicts(shellIn, {"~"},
                   {"~/dev/keys", "~/missing", "~/dev/text", root.string(), "~/dev/dangling", "/"});
}

} // namespace
} // namespace velmo
