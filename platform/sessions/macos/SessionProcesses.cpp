#include "platform/sessions/SessionProcesses.h"

#include "platform/sessions/PseudoTerminal.h"

#include <sys/stat.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <vector>

namespace velmo {

/// Returns the leader's own group, whether or not it still exists, and those that the system lists
/// for the terminal. A process that has left the terminal, as daemons do, is missing: the session's
/// windows do not show it either.
std::set<pid_t> processGroupsOf(pid_t leader, int terminal) {
    std::set<pid_t> groups{leader};
    const char* const name = ::ptsname(terminal);
    struct stat status{};
    if (name == nullptr || ::stat(name, &status) != 0)
        return groups;
    std::array<int, 4> query{CTL_KERN, KERN_PROC, KERN_PROC_TTY, static_cast<int>(status.st_rdev)};
    std::size_t size = 0;
    if (::sysctl(query.data(), query.size(), nullptr, &size, nullptr, 0) != 0)
        return groups;
    std::vector<kinfo_proc> processes(size / sizeof(kinfo_proc) + 8);
    size = processes.size() * sizeof(kinfo_proc);
    if (::sysctl(query.data(), query.size(), processes.data(), &size, nullptr, 0) != 0)
        return groups;
    processes.resize(size / sizeof(kinfo_proc));
    for (const kinfo_proc& process : processes) {
        if (process.kp_eproc.e_pgid > 1)
            groups.insert(process.kp_eproc.e_pgid);
    }
    return groups;
}

std::vector<pid_t> ancestryOf(pid_t process) {
    std::vector<pid_t> ancestry;
    while (process > 0 && ancestry.size() < maxAncestry) {
        ancestry.push_back(process);
        if (const pid_t leader = ::getsid(process); leader > 0)
            ancestry.push_back(leader);
        std::array<int, 4> query{CTL_KERN, KERN_PROC, KERN_PROC_PID, process};
        kinfo_proc found{};
        std::size_t size = sizeof found;
        if (::sysctl(query.data(), query.size(), &found, &size, nullptr, 0) != 0
            || size != sizeof found)
            break;
        process = found.kp_eproc.e_ppid;
    }
    return ancestry;
}

void closeDescriptorsFrom(int first) {
    const int end = ::getdtablesize();
    for (int descriptor = first; descriptor < end; ++descriptor)
        ::close(descriptor);
}

} // namespace velmo
