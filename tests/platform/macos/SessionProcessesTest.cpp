#include "platform/sessions/SessionProcesses.h"

#include <gmock/gmock.h>
#include <sys/sysctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <span>
#include <vector>

/// What the system lists: as many as fit, of those that the query asks for. Nothing for a process
/// that is not listed.
static std::vector<kinfo_proc> listed; // NOLINT: `sysctl` has no other way to learn it
static bool fails = false;             // NOLINT

int sysctl(int* name, unsigned count, void* old, std::size_t* oldSize, void* /*wanted*/,
           std::size_t /*wantedSize*/) {
    const std::vector<int> query(name, name + count);
    const auto user = static_cast<int>(::geteuid());
    std::vector<kinfo_proc> found;
    for (const kinfo_proc& each : listed) {
        if (query == std::vector{CTL_KERN, KERN_PROC, KERN_PROC_UID, user}
            || query == std::vector{CTL_KERN, KERN_PROC, KERN_PROC_PID, each.kp_proc.p_pid})
            found.push_back(each);
    }
    if (fails)
        return -1;
    std::size_t told = found.size();
    if (old != nullptr) {
        told = std::min(told, *oldSize / sizeof(kinfo_proc));
        std::ranges::copy(std::span(found).first(told), static_cast<kinfo_proc*>(old));
    }
    *oldSize = told * sizeof(kinfo_proc);
    return 0;
}

namespace velmo {
namespace {

using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::UnorderedElementsAre;

/// A real session: its leader, and members with or without a group of their own.
class SessionProcessesOfMac : public ::testing::Test {
protected:
    SessionProcessesOfMac() {
        listed.clear();
        fails = false;
        // The session that the tests were started in has no number in a container that it began
        // outside of.
        ::setsid();
    }

    ~SessionProcessesOfMac() override {
        for (const pid_t process : started_)
            ::kill(process, SIGKILL);
        while (::wait(nullptr) > 0 || errno == EINTR) {
        }
    }

    /// Starts a process that waits for its end, and lists it with this group.
    pid_t start(bool leadsSession) {
        const pid_t process = ::fork();
        if (process == 0) {
            leadsSession ? ::setsid() : 0;
            ::pause();
            ::_exit(0);
        }
        started_.push_back(process);
        while (leadsSession && ::getsid(process) != process) {
        }
        return process;
    }

    static void list(pid_t process, pid_t group, pid_t parent = 1) {
        listed.push_back(
            {.kp_proc = {.p_pid = process}, .kp_eproc = {.e_ppid = parent, .e_pgid = group}});
    }

    std::vector<pid_t> started_;
};

TEST_F(SessionProcessesOfMac, AreTheGroupsOfThoseThatNameTheLeaderAsTheirSession) {
    const pid_t leader = start(true);
    const pid_t other = start(true);
    const pid_t ours = start(false);
    list(leader, leader);
    list(other, other);
    list(ours, ::getpgrp());
    list(leader, 70'001); // as a member with a group of its own is listed
    list(leader, 0);      // as the kernel's own is
    EXPECT_THAT(processGroupsOf(leader), UnorderedElementsAre(leader, 70'001));
    EXPECT_THAT(processGroupsOf(other), UnorderedElementsAre(other));
}

TEST_F(SessionProcessesOfMac, AreNoneWhereNothingIsLeft) {
    const pid_t leader = start(true);
    list(::getpid(), ::getpgrp());
    EXPECT_THAT(processGroupsOf(leader), IsEmpty()) << "the leader has ended";
    list(leader, leader);
    fails = true;
    EXPECT_THAT(processGroupsOf(leader), IsEmpty()) << "the system lists nothing";
}

TEST_F(SessionProcessesOfMac, AncestryNamesParentsAndTheLeadersOfTheirSessions) {
    const pid_t leader = start(true);
    const pid_t ours = start(false);
    list(ours, ours, leader);
    list(leader, leader, 70'001);
    EXPECT_THAT(ancestryOf(ours), IsSupersetOf({ours, ::getsid(0), leader, 70'001}));
    list(70'001, 70'001, ours); // as a reused number may make a circle
    EXPECT_LE(ancestryOf(ours).size(), maxAncestry + 1);
}

} // namespace
} // namespace velmo
