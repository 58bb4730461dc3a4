#include "tools/velmo-power/Doctor.h"

#include "lab/instruments/GuardedMac.h"
#include "lab/instruments/TemporaryFolder.h"
#include "platform/client/macos/MacInstallation.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace velmo {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

/// A Mac's folders and tools below another root; files beside the tools contain what these report.
class DoctorTest : public testing::Test {
protected:
    void SetUp() override {
        tool("bin/launchctl",
             "case $1 in print) exit $(cat $0.loaded);; *) cat $0.disabled;; esac");
        tool("usr/bin/codesign",
             "case $2 in --strict) exit $(cat $0.valid);; *) exit $(cat $0.team);; esac");
        write("bin/launchctl.loaded", "0");
        write("bin/launchctl.disabled", "\"io.velmo.host.power\" => enabled\n");
        write("usr/bin/codesign.valid", "0");
        write("usr/bin/codesign.team", "0");
        write("Library/PrivilegedHelperTools/VelmoPowerDaemon", "");
        write("Library/LaunchDaemons/io.velmo.host.power.plist", "");
        fs::create_directories(root.path() / "var/db/velmo");
        write("var/log/io.velmo.host.power.log", "one\ntwo\nthree\nfour\nfive\nsix\n");
    }

    void write(const fs::path& path, std::string_view text) {
        fs::create_directories((root.path() / path).parent_path());
        std::ofstream(root.path() / path) << text;
    }

    void tool(const fs::path& path, const std::string& script) {
        write(path, "#!/bin/sh\n" + script + "\n");
        fs::permissions(root.path() / path, fs::perms::owner_all);
    }

    /// Returns the findings about the Mac below `root`, as `velmo-power` prints them.
    std::string examined(const std::optional<std::string>& requirement = "anchor apple") {
        const Installation installation = examineMac(requirement, root.path().string());
        return findingsText(diagnose(installation, machine, report), installation);
    }

    TemporaryFolder root;
    Events events;
    FakeMachine machine{events};
    Conversation::Answer<HoldReport> report = HoldReport{};
};

TEST_F(DoctorTest, FindsNothingWhereAllIsWell) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "the daemon's files must belong to root";
    const std::string text = examined();
    EXPECT_THAT(text, Not(HasSubstr("WRONG")));
    EXPECT_THAT(text, HasSubstr("log:\n  two\n  three\n  four\n  five\n  six\n"));
}

TEST_F(DoctorTest, NamesEachFaultWithItsCure) {
    struct Case {
        std::string file;
        std::string text; ///< the file's new content; empty: it is removed
        std::string_view fault;
    };

    for (const auto& [file, text, fault] : {
             Case{"Library/PrivilegedHelperTools/VelmoPowerDaemon", "",
                  "VelmoPowerDaemon is missing"},
             Case{"Library/LaunchDaemons/io.velmo.host.power.plist", "", "power.plist is missing"},
             Case{"bin/launchctl.loaded", "113", "nobody offers the daemon's service"},
             Case{"bin/launchctl.disabled", "\"io.velmo.host.power\" => disabled",
                  "told not to start the daemon"},
             Case{"bin/launchctl.disabled", "\t\"io.velmo.host.power\" => true",
                  "told not to start the daemon"},
             Case{"usr/bin/codesign.valid", "1", "is not signed, or was changed since"},
             Case{"usr/bin/codesign.team", "3", "by another team than velmo-power"},
         }) {
        SetUp();
        text.empty() ? static_cast<void>(fs::remove(root.path() / file)) : write(file, text);
        EXPECT_THAT(examined(), testing::ContainsRegex("WRONG .*" + std::string(fault) + "\n +-> "))
            << file;
    }
    SetUp();
    EXPECT_THAT(examined(std::nullopt), HasSubstr("this copy of velmo-power is not signed"));
    fs::permissions(root.path() / "var/db/velmo", fs::perms::others_write, fs::perm_options::add);
    EXPECT_THAT(examined(), HasSubstr("others may write to it"));
    fs::remove(root.path() / "var/db/velmo");
    fs::create_symlink("/tmp", root.path() / "var/db/velmo");
    EXPECT_THAT(examined(), HasSubstr("var/db/velmo is a link"));
}

TEST_F(DoctorTest, NamesTheClientForWhichSleepIsDisabled) {
    machine.sleepDisabled = true;
    EXPECT_THAT(examined(), HasSubstr("WRONG    sleep is disabled, and not by the daemon"));
    report->pending = true;
    EXPECT_THAT(examined(), HasSubstr("the daemon could not enable it yet"));
    report->holder = HolderReport{.processId = 7, .program = "velmo-power"};
    EXPECT_THAT(examined(), HasSubstr("ok       sleep is disabled, for velmo-power (7)"));
    report->recordIsUnreadable = true;
    EXPECT_THAT(examined(), HasSubstr("WRONG    the daemon's record can't be read"));
}

TEST_F(DoctorTest, TellsADeadDaemonsRecordFromAnotherProgramsSetting) {
    machine.sleepDisabled = true;
    report = std::unexpected(Conversation::Failure::silent);
    EXPECT_THAT(examined(), HasSubstr("WRONG    the power daemon does not answer\n"
                                      "         -> look at its log\n"));
    EXPECT_THAT(examined(), HasSubstr("sleep is disabled, and not by the daemon\n"));
    write("var/db/velmo/power-daemon.json", "{}");
    EXPECT_THAT(examined(), HasSubstr("sleep is disabled by the daemon, whose record is still on "
                                      "disk\n         -> mend what keeps"));
    Installation unseen = examineMac("anchor apple", root.path().string());
    unseen.hasRecord.reset();
    EXPECT_EQ(diagnose(unseen, machine, report).back().fact,
              "sleep is disabled, by the daemon or by another program");
}

TEST_F(DoctorTest, NamesTheCuresOfASimulatedMac) {
    machine.sleepDisabled = true;
    machine.propertyReadable = false;
    report = std::unexpected(Conversation::Failure::unreachable);
    Installation mac{.simulatedMac = "/m",
                     .recordFolder = Installation::Place{.path = "/m/var/db/velmo", .exists = true},
                     .hasRecord = true};
    const auto examine = [&] { return findingsText(diagnose(mac, machine, report), mac); };
    const std::string ended = examine();
    EXPECT_THAT(ended, testing::StartsWith(
                           "mac      simulated, in /m\n"
                           "WRONG    the power daemon can't be reached\n"
                           "         -> start VelmoPowerDaemonSimulated /m, which ends by itself "
                           "after a minute without a hold\n"));
    EXPECT_THAT(ended, HasSubstr("on disk\n         -> start VelmoPowerDaemonSimulated /m, which"));
    EXPECT_THAT(ended, HasSubstr("         -> velmo-mac set /m --property-unreadable off\n"));
    report = std::unexpected(Conversation::Failure::silent);
    const std::string hung = examine();
    EXPECT_THAT(hung, HasSubstr("answer\n         -> look at what it says where it was started\n"));
    report = std::unexpected(Conversation::Failure::full);
    const std::string full = examine();
    EXPECT_THAT(full, HasSubstr("too many clients\n         -> end some of the programs that"));
    report = HoldReport{.recordIsUnreadable = true};
    const std::string damaged = examine();
    EXPECT_THAT(damaged, HasSubstr("off, then rm /m/var/db/velmo/power-daemon.json\n"));
    for (const std::string& text : {ended, hung, full, damaged})
        EXPECT_THAT(text, Not(testing::AnyOf(HasSubstr("sudo"), HasSubstr(" /var"),
                                             HasSubstr("its log"), HasSubstr("packaging"))));
}

} // namespace
} // namespace velmo
