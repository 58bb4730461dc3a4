/// libSystem's processes (<spawn.h>, <unistd.h>, <stdlib.h>).

#include "lab/emulated-mac/shims/Darwin.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Machine.h"
#include "lab/emulated-mac/shims/ObjectiveC.h"
#include "lab/emulated-mac/shims/Process.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

extern char** environ;

namespace velmo {

namespace {

constexpr std::uint32_t firstPerson = 501;

/// Never destroyed: threads may ask until the process ends.
std::string& executable() {
    static auto& made = *new std::string;
    return made;
}

} // namespace

void setExecutable(std::string path) {
    executable() = std::move(path);
}

std::uint32_t emulatedUser() {
    const auto user = setting("EMULATED_UID");
    return user ? static_cast<std::uint32_t>(std::strtoul(user->c_str(), nullptr, 10))
                : firstPerson;
}

// Children. The attributes are opaque on a Mac, and one pointer in size; what is set is kept behind
// that pointer.

namespace {

/// XNU's <sys/spawn.h>.
enum SpawnFlag {
    setGroup = 0x2,
    setDefaultSignals = 0x4,
    setMask = 0x8,
    closeUnnamed = 0x4000,
};

struct SpawnAttributes {
    int flags = 0;
    std::uint32_t defaults = 0; ///< a Darwin signal set: bit n - 1 for signal n
    std::uint32_t mask = 0;
};

struct SpawnAction {
    int from;
    int to;
};

using SpawnActions = std::vector<SpawnAction>;

int makeAttributes(SpawnAttributes** attributes) {
    *attributes = new SpawnAttributes;
    return 0;
}

int destroyAttributes(SpawnAttributes** attributes) {
    delete *attributes;
    return 0;
}

int setSpawnFlags(SpawnAttributes** attributes, std::int16_t flags) {
    (*attributes)->flags = flags;
    return 0;
}

int setSpawnDefaults(SpawnAttributes** attributes, const std::uint32_t* signals) {
    (*attributes)->defaults = *signals;
    return 0;
}

int setSpawnMask(SpawnAttributes** attributes, const std::uint32_t* signals) {
    (*attributes)->mask = *signals;
    return 0;
}

int makeActions(SpawnActions** actions) {
    *actions = new SpawnActions;
    return 0;
}

int destroyActions(SpawnActions** actions) {
    delete *actions;
    return 0;
}

int addDuplicate(SpawnActions** actions, int from, int to) {
    (*actions)->push_back({from, to});
    return 0;
}

void setUpSignals(const SpawnAttributes& attributes) {
    sigset_t mask;
    sigemptyset(&mask);
    for (int signal = 1; signal < 32; ++signal) {
        const std::uint32_t bit = 1U << (signal - 1);
        if ((attributes.flags & setDefaultSignals) != 0 && (attributes.defaults & bit) != 0)
            static_cast<void>(::signal(linuxSignalOf(signal), SIG_DFL));
        if ((attributes.mask & bit) != 0)
            sigaddset(&mask, linuxSignalOf(signal));
    }
    if ((attributes.flags & setMask) != 0)
        ::pthread_sigmask(SIG_SETMASK, &mask, nullptr);
}

/// Does the actions. With the flag that closes descriptors, a descriptor survives only if an action
/// names it as its target; one that is duplicated onto itself counts (posix_spawn(2)).
void setUpDescriptors(const SpawnAttributes& attributes, const SpawnActions& actions) {
    constexpr int highest = 1024;
    for (const SpawnAction& action : actions) {
        if (action.from == action.to)
            ::fcntl(action.to, F_SETFD, 0);
        else
            ::dup2(action.from, action.to);
    }
    if ((attributes.flags & closeUnnamed) == 0)
        return;
    for (int file = 0; file < highest; ++file) {
        if (std::ranges::none_of(actions, [&](const SpawnAction& each) { return each.to == file; }))
            ::fcntl(file, F_SETFD, FD_CLOEXEC);
    }
}

[[noreturn]] void becomeChild(const std::string& program, const SpawnAttributes& attributes,
                              const SpawnActions& actions, char* const* arguments,
                              char* const* environment, int errorPipe) {
    if ((attributes.flags & setGroup) != 0)
        ::setpgid(0, 0);
    setUpSignals(attributes);
    setUpDescriptors(attributes, actions);
    ::fcntl(errorPipe, F_SETFD, FD_CLOEXEC);
    ::execvpe(program.c_str(), arguments, environment);
    const int error = errno;
    static_cast<void>(!::write(errorPipe, &error, sizeof error));
    ::_exit(127);
}

/// Starts a real child: a program of this machine, run under its own name.
int spawn(pid_t* child, const char* program, SpawnActions* const* actions,
          SpawnAttributes* const* attributes, char* const* arguments, char* const* environment) {
    std::string words;
    for (char* const* word = arguments; *word != nullptr; ++word)
        words += std::string(word == arguments ? "" : " ") + *word;
    note("runs " + words);
    // The pipe is moved to high numbers, out of the way of the descriptors that the actions name.
    std::array<int, 2> errorPipe{};
    if (::pipe2(errorPipe.data(), O_CLOEXEC) != 0)
        return darwinErrorOf(errno);
    const int writeEnd = ::fcntl(errorPipe[1], F_DUPFD_CLOEXEC, 512);
    ::close(errorPipe[1]);
    const std::string place = placeOf(program);
    const pid_t made = ::fork();
    if (made == 0)
        becomeChild(place, **attributes, **actions, arguments, environment, writeEnd);
    ::close(writeEnd);
    int error = made < 0 ? errno : 0;
    if (made > 0 && ::read(errorPipe[0], &error, sizeof error) > 0)
        ::waitpid(made, nullptr, 0);
    ::close(errorPipe[0]);
    *child = made;
    return error == 0 ? 0 : darwinErrorOf(error);
}

/// Waits for a child. The status has the same form on both systems, but for the signals' numbers.
pid_t waitFor(pid_t child, int* status, int options) {
    constexpr int stopped = 0x7F;
    constexpr int coreDumped = 0x80;
    int seen = 0;
    const pid_t found = keepError(::waitpid(child, &seen, options));
    if (found > 0 && WIFSTOPPED(seen))
        seen = darwinSignalOf(WSTOPSIG(seen)) << 8 | stopped;
    else if (found > 0 && WIFSIGNALED(seen))
        seen = darwinSignalOf(WTERMSIG(seen)) | (seen & coreDumped);
    if (found > 0 && status != nullptr)
        *status = seen;
    return found;
}

/// Forks. The child has this thread alone, as on a Mac.
pid_t split() {
    note("forks");
    return keepError(::fork());
}

/// <mach-o/loader.h>: MH_MAGIC_64.
bool isForTheMac(const std::string& path) {
    std::array<char, 4> magic{};
    std::ifstream(path, std::ios::binary).read(magic.data(), magic.size());
    return std::string_view(magic.data(), magic.size()) == "\xCF\xFA\xED\xFE";
}

/// Runs another program in this process. An executable of the Mac is emulated again.
int become(const char* program, char* const* arguments) {
    const std::string place = placeOf(program);
    if (!isForTheMac(place))
        return keepError(::execvp(place.c_str(), arguments));
    std::array<char, 4096> emulator{};
    if (::readlink("/proc/self/exe", emulator.data(), emulator.size() - 1) < 0)
        endRun("the emulator's own path can't be read");
    std::string processor = setting("EMULATED_PROCESSOR").value_or("");
    std::vector<char*> words;
    if (!processor.empty())
        words.push_back(processor.data());
    words.push_back(emulator.data());
    for (char* const* word = arguments; *word != nullptr; ++word)
        words.push_back(*word);
    words.push_back(nullptr);
    return keepError(::execvp(words.front(), words.data()));
}

int becomeIn(const char* program, char* const* arguments, char* const* environment) {
    const std::string place = placeOf(program);
    if (isForTheMac(place))
        endRun("execve of an executable of the Mac");
    return keepError(::execve(place.c_str(), arguments, environment));
}

/// setsid(2).
pid_t leadSession() {
    return keepError(::setsid());
}

/// Gives the path that the process was started by (dyld(3)). Returns -1 and gives the size needed
/// if the room is too small.
int ownPath(char* to, std::uint32_t* size) {
    const auto needed = static_cast<std::uint32_t>(executable().size()) + 1;
    if (*size < needed) {
        *size = needed;
        return -1;
    }
    std::ranges::copy(executable(), to);
    to[needed - 1] = '\0';
    return 0;
}

/// Passes on a path, or null for an error, and keeps the error.
char* pathOrError(char* path) {
    if (path == nullptr)
        *darwinErrno() = darwinErrorOf(errno);
    return path;
}

/// realpath(3), getcwd(3).
char* wholePath(const char* path, char* to) {
    return pathOrError(::realpath(path, to));
}

char* currentFolder(char* to, std::size_t size) {
    return pathOrError(::getcwd(to, size));
}

} // namespace

// The end.

namespace {

struct AtExit {
    void (*function)(void*);
    void* argument;
};

std::vector<AtExit>& registered() {
    static auto& made = *new std::vector<AtExit>;
    return made;
}

int registerAtExit(void (*function)(void*), void* argument, void* /*image*/) {
    registered().push_back({function, argument});
    return 0;
}

/// Does what `_exit` does: calls and flushes nothing.
[[noreturn]] void exitAtOnce(int status) {
    note("_exit(" + std::to_string(status) + "), alive:" + objectLedger());
    ::_exit(status);
}

[[noreturn]] void stackIsSmashed() {
    misuse("the stack is smashed");
}

std::uint32_t user() {
    note("getuid");
    return emulatedUser();
}

/// Returns null, as a Mac without the library does: no library lies where the executables would
/// load one.
void* openLibrary(const char* path, int /*mode*/) {
    note(std::string("dlopen ") + (path == nullptr ? "(this)" : path) + ": not there");
    return nullptr;
}

/// Gives the path of a process's executable (<libproc.h>). In an emulated process's command line
/// the path is the word behind the emulator's.
int pathOf(int process, char* to, std::uint32_t size) {
    std::ifstream words("/proc/" + std::to_string(process) + "/cmdline");
    for (std::string before, word; std::getline(words, word, '\0'); before = word) {
        if (before.ends_with("/emulated-mac"))
            return std::snprintf(to, size, "%s", word.c_str());
    }
    const auto length = ::readlink(("/proc/" + std::to_string(process) + "/exe").c_str(), to, size);
    return length < 0 ? 0 : static_cast<int>(length);
}

} // namespace

std::vector<std::string> wordsOf(int process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/cmdline");
    std::vector<std::string> words;
    for (std::string word; std::getline(file, word, '\0');) {
        if (word.ends_with("/emulated-mac"))
            words.clear();
        else
            words.push_back(word);
    }
    return words;
}

namespace {

/// PROC_PIDT_SHORTBSDINFO of proc_pidinfo(3): fills in the user, which is the emulated one of every
/// process.
int processFacts(int process, int flavour, std::uint64_t /*argument*/, void* to, int size) {
    constexpr int shortFacts = 13;
    constexpr int length = 64;
    constexpr std::size_t user = 36;
    if (flavour != shortFacts || size != length)
        misuse("proc_pidinfo of a kind that no shim has");
    if (wordsOf(process).empty())
        return 0;
    std::memset(to, 0, length);
    const std::uint32_t owner = emulatedUser();
    std::memcpy(static_cast<char*>(to) + user, &owner, sizeof owner);
    return length;
}

std::uintptr_t stackGuard = 0x00A5C3F00FB4D296;

constexpr auto shims = std::to_array<Shim>({
    {"__NSGetExecutablePath", address<ownPath>},
    {"__exit", address<exitAtOnce>},
    {"___cxa_atexit", address<registerAtExit>},
    {"___stack_chk_fail", address<stackIsSmashed>},
    {"___stack_chk_guard", address<&stackGuard>},
    {"_abort", address<::abort>},
    {"_dlopen", address<openLibrary>},
    {"_environ", address<&environ>},
    {"_getcwd", address<currentFolder>},
    {"_getenv", address<::getenv>},
    {"_getuid", address<user>},
    {"_execve", address<becomeIn>},
    {"_execvp", address<become>},
    {"_fork", address<split>},
    {"_posix_spawn_file_actions_adddup2", address<addDuplicate>},
    {"_posix_spawn_file_actions_destroy", address<destroyActions>},
    {"_posix_spawn_file_actions_init", address<makeActions>},
    {"_posix_spawnattr_destroy", address<destroyAttributes>},
    {"_posix_spawnattr_init", address<makeAttributes>},
    {"_posix_spawnattr_setflags", address<setSpawnFlags>},
    {"_posix_spawnattr_setsigdefault", address<setSpawnDefaults>},
    {"_posix_spawnattr_setsigmask", address<setSpawnMask>},
    {"_posix_spawnp", address<spawn>},
    {"_proc_pidinfo", address<processFacts>},
    {"_proc_pidpath", address<pathOf>},
    {"_realpath$DARWIN_EXTSN", address<wholePath>},
    {"_setsid", address<leadSession>},
    {"_waitpid", address<waitFor>},
});

} // namespace

void exitAfterMain(int status) {
    while (!registered().empty()) {
        const AtExit last = registered().back();
        registered().pop_back();
        last.function(last.argument);
    }
    std::fflush(nullptr);
    // The system's threads may keep what the program has released for a moment longer.
    for (int i = 0; i < 100 && isAnythingAlive(); ++i)
        ::usleep(10'000);
    note("main returned " + std::to_string(status) + ", alive:" + objectLedger());
    ::_exit(status);
}

Shims systemProcessShims() {
    return shims;
}

} // namespace velmo
