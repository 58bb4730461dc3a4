#include "platform/host/PtyHostFileSystem.h"

#include "tests/platform/host/HomeOnDisk.h"

#include <sys/stat.h>

namespace velmo {
namespace {

namespace fs = std::filesystem;

class PtyOnDisk : public HomeOnDisk {
protected:
    bool trusts(const std::string& given, const std::string& resolved) const {
        return Pty::isTrustedProgram(given, resolved, environment, host);
    }

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
    const Strings folders{at("~"), at("@")};
    const Strings programs{"/bin/sh", (root / "claude").string()};
    const Strings neither{at("~/dev/text"), at("~/dev/dangling"), at("~/missing"), ""};
    const auto ofHost = [this](auto ask) {
        return [this, ask](const std::string& path) { return (host.*ask)(path); };
    };
    for (const Strings& others : {neither, programs}) {
        expectVerdicts(ofHost(&Pty::HostFileSystem::isDirectory), folders, others);
        expectVerdicts(Pty::isDirectory, folders, others);
    }
    for (const Strings& others : {neither, folders}) {
        expectVerdicts(ofHost(&Pty::HostFileSystem::isExecutable), programs, others);
        expectVerdicts(Pty::isExecutableFile, programs, others);
    }
}

TEST_F(PtyOnDisk, KnowsWhoElseMayWrite) {
    const auto isWritable = [this](const std::string& path) { return host.isWorldWritable(path); };
    for (const mode_t mode : {0755U, 0775U}) {
        ::chmod(home.c_str(), mode); // and not the link's own 0777
        expectVerdicts(isWritable, {at("~/missing"), at("~/dev/dangling")},
                       {"/", at("~"), at("@")});
    }
    for (const mode_t mode : {0777U, 01777U, 0702U}) {
        ::chmod(home.c_str(), mode);
        expectVerdicts(isWritable, {at("~"), at("@")}, {});
    }
}

TEST_F(PtyOnDisk, HomeIsTheEnvironmentsOrTheUsers) {
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
    environment["HOME"] = "";
    EXPECT_FALSE(shellIn("~"));
}

TEST_F(PtyOnDisk, TrustsTheSystemsFoldersAndNotTheTemporaryOnes) {
    EXPECT_TRUE(trusts("/bin/sh", "/bin/sh"));
    environment["TMPDIR"] = root.string();
    EXPECT_TRUE(trusts("/bin/sh", "/bin/sh"));
    const std::string linked = (root / "claude").string();
    EXPECT_FALSE(trusts(linked, "/bin/sh"));
    EXPECT_FALSE(trusts("/bin/sh", linked));
    environment["TMPDIR"] = "/bin";
    EXPECT_FALSE(trusts("/bin/sh", fs::canonical("/bin").string() + "/sh"));
}

} // namespace
} // namespace velmo
