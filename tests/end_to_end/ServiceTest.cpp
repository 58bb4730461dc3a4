#include "lab/instruments/TemporaryFolder.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/Descriptor.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace velmo {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// velmo-session with a home and a systemctl of its own, which writes down what it is told.
class ServiceTest : public testing::Test {
protected:
    static constexpr int success = 0;
    static constexpr int usage = 122;
    static constexpr int refused = 123;

    ServiceTest() {
        const fs::path tool = temporary.path() / "systemctl";
        std::ofstream(tool) << "#!/bin/sh\n"
                               "cd \"$HOME\"\n"
                               "case $2 in is-enabled) exec test -e loaded ;; esac\n"
                               "echo \"$*\" >>calls\n"
                               "[ \"$2\" != \"$(cat fails)\" ] || exit 1\n"
                               "case $2 in enable) touch loaded ;; disable) rm -f loaded ;; esac\n";
        fs::permissions(tool, fs::perms::owner_all);
        std::ofstream(temporary.path() / "fails") << "nothing";
        ::setenv("HOME", temporary.path().c_str(), 1);
        ::setenv("PATH", (temporary.path().string() + ":/usr/bin:/bin").c_str(), 1);
    }

    [[nodiscard]] static int run(const std::string& what) {
        const Descriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
        const std::vector<std::string_view> arguments{"service", what};
        const auto child =
            startChild(VELMO_SESSION, arguments, {null.get(), null.get(), null.get()});
        return child ? waitForChild(*child).value_or(-1) : -1;
    }

    /// Returns what systemctl was told since the last time.
    [[nodiscard]] std::vector<std::string> calls() const {
        std::vector<std::string> lines;
        std::ifstream file(temporary.path() / "calls");
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
        fs::remove(temporary.path() / "calls");
        return lines;
    }

    [[nodiscard]] bool isWritten() const { return fs::exists(unit); }

    TemporaryFolder temporary;
    fs::path unit = temporary.path() / ".config/systemd/user/velmo-session.service";
};

const std::string reload = "--user daemon-reload";
const std::string enable = "--user enable --now velmo-session.service";
const std::string disable = "--user disable --now velmo-session.service";

TEST_F(ServiceTest, IsInstalledRepeatedlyAndRemoved) {
    EXPECT_EQ(run("status"), refused);
    EXPECT_EQ(run("install"), success);
    EXPECT_THAT(calls(), ElementsAre(reload, enable));
    EXPECT_EQ(run("status"), success);
    std::ofstream(unit) << "an older one\n";
    EXPECT_EQ(run("install"), success);
    EXPECT_THAT(calls(), ElementsAre(disable, reload, enable)) << "the older one stops first";
    EXPECT_GT(fs::file_size(unit), 100U);
    EXPECT_EQ(run("remove"), success);
    EXPECT_THAT(calls(), ElementsAre(disable));
    EXPECT_FALSE(isWritten());
    EXPECT_EQ(run("status"), refused);
    EXPECT_EQ(run("remove"), success) << "where nothing is installed";
}

TEST_F(ServiceTest, IsInstalledWholeOrNotAtAll) {
    for (const char* failing : {"daemon-reload", "enable"}) {
        std::ofstream(temporary.path() / "fails") << failing;
        EXPECT_EQ(run("install"), refused) << failing;
        EXPECT_FALSE(isWritten()) << failing;
    }
    static_cast<void>(calls());
    EXPECT_EQ(run(""), usage);
    EXPECT_EQ(run("dance"), usage);
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(ServiceTest, StaysWhereTheSystemDoesNotLetGoOfIt) {
    ASSERT_EQ(run("install"), success);
    std::ofstream(temporary.path() / "fails") << "disable";
    EXPECT_EQ(run("remove"), refused);
    EXPECT_TRUE(isWritten());
}

} // namespace
} // namespace velmo
