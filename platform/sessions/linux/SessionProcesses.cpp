#include "platform/sessions/SessionProcesses.h"

#include "core/support/Decimal.h"
#include "platform/posix/Folder.h"
#include "platform/sessions/PseudoTerminal.h"

#include <unistd.h>

#include <filesystem>
#include <sstream>
#include <system_error>

namespace velmo {

namespace {

constexpr std::size_t maxStat = 4096; // bytes

struct Process {
    pid_t parent = 0;
    pid_t group = 0;
    pid_t session = 0;
};

/// Reads /proc/PID/stat, which has the id, the name in brackets, a letter, the parent, the group
/// and the session.
std::optional<Process> processIn(const std::string& folder) {
    const auto opened = Folder::open(folder);
    const auto stat = opened ? opened->read("stat", maxStat) : std::nullopt;
    const std::size_t name = stat ? stat->rfind(')') : std::string::npos;
    if (name == std::string::npos)
        return std::nullopt;
    std::istringstream rest(stat->substr(name + 1));
    char state = 0;
    Process process;
    if (!(rest >> state >> process.parent >> process.group >> process.session))
        return std::nullopt;
    return process;
}

} // namespace

std::set<pid_t> processGroupsOf(pid_t leader) {
    std::set<pid_t> groups;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        if (!Decimal::parsePositive(entry.path().filename().string(), INT32_MAX))
            continue;
        const auto process = processIn(entry.path().string());
        if (process && process->session == leader && process->group > 1)
            groups.insert(process->group);
    }
    return groups;
}

std::vector<pid_t> ancestryOf(pid_t process) {
    std::vector<pid_t> ancestry;
    while (process > 0 && ancestry.size() < maxAncestry) {
        ancestry.push_back(process);
        const auto found = processIn("/proc/" + std::to_string(process));
        if (!found)
            break;
        ancestry.push_back(found->session);
        process = found->parent;
    }
    return ancestry;
}

void closeDescriptorsFrom(int first) {
    ::closefrom(first);
}

} // namespace velmo
