#include "platform/sessions/SessionProcesses.h"

#include "platform/sessions/PseudoTerminal.h"

#include <sys/sysctl.h>
#include <unistd.h>

#include <array>
#include <vector>

namespace velmo {

namespace {

constexpr std::size_t spareProcesses = 64; ///< that may start between the two calls

/// Returns the processes of this user; none if the system does not list them.
std::vector<kinfo_proc> ownProcesses() {
    std::array<int, 4> query{CTL_KERN, KERN_PROC, KERN_PROC_UID, static_cast<int>(::geteuid())};
    std::size_t size = 0;
    if (::sysctl(query.data(), query.size(), nullptr, &size, nullptr, 0) != 0)
        return {};
    std::vector<kinfo_proc> processes(size / sizeof(kinfo_proc) + spareProcesses);
    size = processes.size() * sizeof(kinfo_proc);
    if (::sysctl(query.data(), query.size(), processes.data(), &size, nullptr, 0) != 0)
        return {};
    processes.resize(size / sizeof(kinfo_proc));
    return processes;
}

} // namespace

// XNU takes the terminal from a session once its leader has ended (proc_exit in
// bsd/kern/kern_exit.c), so KERN_PROC_TTY would list nothing that is left. The session's id stays.
std::set<pid_t> processGroupsOf(pid_t leader) {
    std::set<pid_t> groups;
    for (const kinfo_proc& process : ownProcesses()) {
        if (process.kp_eproc.e_pgid > 1 && ::getsid(process.kp_proc.p_pid) == leader)
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
