/// What libSystem tells of users, their processes and their limits (<sys/sysctl.h>, <pwd.h>,
/// <sys/resource.h>, confstr(3)).

#include "lab/emulated-mac/shims/Darwin.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Machine.h"
#include "lab/emulated-mac/shims/Process.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <pwd.h>
#include <sys/random.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace velmo {

namespace {

// sysctl: processes, and the words by which one was started.

constexpr std::size_t processSize = 648; // sizeof(kinfo_proc)
constexpr std::size_t numberAt = 40;     // kp_proc.p_pid
constexpr std::size_t parentAt = 560;    // kp_eproc.e_ppid
constexpr std::size_t groupAt = 564;     // kp_eproc.e_pgid

struct Process {
    pid_t number;
    pid_t parent;
    pid_t group;
};

/// Reads /proc/PID/stat: the number, the name in brackets, a letter, the parent and the group.
/// Returns nothing if there is no such process.
std::optional<Process> processOf(pid_t number) {
    std::ifstream file("/proc/" + std::to_string(number) + "/stat");
    std::string line;
    std::getline(file, line);
    Process process{.number = number, .parent = 0, .group = 0};
    const std::size_t name = line.rfind(')');
    if (name == std::string::npos
        || std::sscanf(line.c_str() + name + 1, " %*c %d %d", &process.parent, &process.group) != 2)
        return std::nullopt;
    return process;
}

/// The processes that run as this one does. XNU lists none that has ended.
std::vector<Process> processesOfUser() {
    std::vector<Process> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        int number = 0;
        struct stat status{};
        const std::string path = entry.path().string();
        if (std::sscanf(path.c_str(), "/proc/%d", &number) != 1
            || ::stat(path.c_str(), &status) != 0 || status.st_uid != ::getuid())
            continue;
        if (const auto process = processOf(number))
            found.push_back(*process);
    }
    return found;
}

/// The size is that of what was given; without room it is that of all, and a little more
/// (sysctl_prochandle in XNU's kern_sysctl.c).
int giveProcesses(const std::vector<Process>& processes, char* to, std::size_t* size) {
    if (to == nullptr) {
        *size = (processes.size() + 5) * processSize;
        return 0;
    }
    const std::size_t fitting = std::min(processes.size(), *size / processSize);
    for (std::size_t i = 0; i < fitting; ++i) {
        char* const place = to + i * processSize;
        std::memset(place, 0, processSize);
        std::memcpy(place + numberAt, &processes[i].number, sizeof(pid_t));
        std::memcpy(place + parentAt, &processes[i].parent, sizeof(pid_t));
        std::memcpy(place + groupAt, &processes[i].group, sizeof(pid_t));
    }
    *size = fitting * processSize;
    if (fitting == processes.size())
        return 0;
    *darwinErrno() = darwinErrorOf(ENOMEM);
    return -1;
}

/// Gives the number of words, the program's path, and the words (sysctl_procargsx in XNU's
/// kern_sysctl.c).
int giveWords(pid_t process, char* to, std::size_t* size) {
    const auto words = wordsOf(process);
    const int number = static_cast<int>(words.size());
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    bytes += words.empty() ? "" : words.front();
    bytes.append(4, '\0');
    for (const std::string& word : words)
        bytes.append(word).push_back('\0');
    if (to != nullptr)
        bytes.copy(to, *size);
    *size = bytes.size();
    return 0;
}

int systemControl(const int* name, std::uint32_t count, char* to, std::size_t* size,
                  const void* wanted, std::size_t /*wantedSize*/) {
    const std::vector<int> query(name, name + count);
    if (wanted != nullptr)
        endRun("a sysctl that sets");
    if (query == std::vector{1, 14, 5, static_cast<int>(emulatedUser())}) // KERN_PROC_UID
        return giveProcesses(processesOfUser(), to, size);
    if (count == 4 && query == std::vector{1, 14, 1, query.back()}) { // KERN_PROC_PID
        const auto process = processOf(query.back());
        return giveProcesses(process ? std::vector{*process} : std::vector<Process>(), to, size);
    }
    if (count == 3 && query == std::vector{1, 49, query.back()}) // KERN_PROCARGS2
        return giveWords(query.back(), to, size);
    endRun("a sysctl that has no case");
}

// The user.

struct DarwinUser {
    const char* name;
    const char* password;
    uid_t user;
    gid_t group;
    std::int64_t change;
    const char* accessClass;
    const char* fullName;
    const char* home;
    const char* shell;
    std::int64_t expires;
};

static_assert(sizeof(DarwinUser) == 72);

DarwinUser* findUser(uid_t user) {
    static DarwinUser found{};
    static const std::string home = placeOf("/Users/person");
    if (user != emulatedUser())
        return nullptr;
    found = {.name = "person",
             .password = "*",
             .user = user,
             .group = 20,
             .change = 0,
             .accessClass = "",
             .fullName = "Person",
             .home = home.c_str(),
             .shell = "/bin/sh",
             .expires = 0};
    return &found;
}

int findUserIn(uid_t user, DarwinUser* to, char* /*room*/, std::size_t /*size*/,
               DarwinUser** found) {
    *found = nullptr;
    if (const DarwinUser* const known = findUser(user)) {
        *to = *known;
        *found = to;
    }
    return 0;
}

constexpr int temporaryFolder = 65537; // _CS_DARWIN_USER_TEMP_DIR

/// Returns the size of the text with its NUL, as confstr(3) does.
std::size_t configuration(int name, char* to, std::size_t size) {
    if (name != temporaryFolder)
        endRun("a confstr that has no case");
    const std::string folder = placeOf("/var/folders/person/T/");
    std::filesystem::create_directories(folder);
    std::snprintf(to, size, "%s", folder.c_str());
    return folder.size() + 1;
}

// Limits.

constexpr int darwinOpenFiles = 8; // RLIMIT_NOFILE
constexpr int darwinCore = 4;      // RLIMIT_CORE

int linuxLimitOf(int limit) {
    if (limit == darwinOpenFiles)
        return RLIMIT_NOFILE;
    if (limit == darwinCore)
        return RLIMIT_CORE;
    endRun("a limit that has no case: " + std::to_string(limit));
}

int readLimit(int limit, rlimit* to) {
    return keepError(::getrlimit(linuxLimitOf(limit), to));
}

int setLimit(int limit, const rlimit* from) {
    return keepError(::setrlimit(linuxLimitOf(limit), from));
}

constexpr auto shims = std::to_array<Shim>({
    {"_confstr", address<configuration>},
    {"_getdtablesize", address<::getdtablesize>},
    {"_getentropy", address<Translated<::getentropy>::call>},
    {"_geteuid", address<emulatedUser>},
    {"_getpid", address<::getpid>},
    {"_getpwuid", address<findUser>},
    {"_getpwuid_r", address<findUserIn>},
    {"_getrlimit", address<readLimit>},
    {"_getsid", address<Translated<::getsid>::call>},
    {"_setrlimit", address<setLimit>},
    {"_sysctl", address<systemControl>},
});

} // namespace

Shims systemUserShims() {
    return shims;
}

} // namespace velmo
