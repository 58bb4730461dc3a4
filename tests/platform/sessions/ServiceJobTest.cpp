#include "sessions/ServiceJob.h"

#include "platform/host/PropertyList.h"

#include <gmock/gmock.h>

namespace velmo {
namespace {

using testing::HasSubstr;

const ServiceFacts facts{
    .home = "/Users/a", .executable = R"(/opt/a "b" <&> %h $x \y/velmo-session)", .user = 501};

TEST(ServiceJob, IsAPropertyListForLaunchd) {
    const ServiceJob job = launchdJob(facts);
    EXPECT_EQ(job.path, "/Users/a/Library/LaunchAgents/io.velmo.host.sessions.plist");
    EXPECT_EQ(PropertyList::parse(job.text),
              (Value::Dictionary{{"Label", "io.velmo.host.sessions"},
                                 {"ProgramArguments", Value::Array{facts.executable, "serve"}},
                                 {"RunAtLoad", true},
                                 {"KeepAlive", Value::Dictionary{{"SuccessfulExit", false}}},
                                 {"LimitLoadToSessionType", "Background"},
                                 {"ProcessType", "Interactive"}}));
    EXPECT_EQ(job.start.back().words,
              (std::vector<std::string>{"/bin/launchctl", "bootstrap", "user/501", job.path}));
    EXPECT_EQ(job.stop.back().words, (std::vector<std::string>{"/bin/launchctl", "bootout",
                                                               "user/501/io.velmo.host.sessions"}));
}

TEST(ServiceJob, IsAUnitForSystemd) {
    const ServiceJob job = systemdJob(facts);
    EXPECT_EQ(job.path, "/Users/a/.config/systemd/user/velmo-session.service");
    EXPECT_THAT(job.text,
                HasSubstr(R"(ExecStart="/opt/a \"b\" <&> %%h $$x \\y/velmo-session" serve)"));
    EXPECT_THAT(job.text, HasSubstr("\nRestart=on-failure\n"));
    EXPECT_THAT(job.text, HasSubstr("\nWantedBy=default.target\n"));
}

} // namespace
} // namespace velmo
