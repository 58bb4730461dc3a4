#include "tools/velmo-session/ServiceCommand.h"

#include "core/support/Text.h"
#include "platform/host/PtyHostFileSystem.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/DiskPath.h"
#include "platform/posix/Folder.h"
#include "platform/posix/OwnExecutable.h"
#include "platform/posix/StandardStreams.h"
#include "platform/sessions/UserService.h"
#include "tools/velmo-session/Complain.h"
#include "tools/velmo-session/ControlClient.h"
#include "tools/velmo-session/SessionExit.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace velmo {

namespace {

constexpr mode_t folderMode = 0755;
constexpr mode_t fileMode = 0644;
constexpr std::chrono::milliseconds pause(100);
constexpr int maxPauses = 50; ///< after which the manager of services counts as stuck

bool canBeWritten(const std::string& path) {
    return path.starts_with('/') && Text::isValidUtf8(path)
           && std::ranges::none_of(path, [](unsigned char byte) { return byte < ' '; });
}

std::string homeFolder() {
    const char* const given = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe)
    Pty::Environment environment;
    if (given != nullptr)
        environment.emplace("HOME", given);
    return Pty::HostFileSystem().home(environment).value_or("");
}

/// Returns this user's job; absent if a path can't be written into the job's file.
std::optional<ServiceJob> ownJob() {
    const ServiceFacts facts{
        .home = homeFolder(), .executable = ownExecutable().string(), .user = ::getuid()};
    if (!canBeWritten(facts.home) || !canBeWritten(facts.executable))
        return std::nullopt;
    return userServiceJob(facts);
}

bool succeeds(const ServiceJob::Command& command, int standardError) {
    const Descriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
    const std::vector<std::string_view> arguments(command.words.begin() + 1, command.words.end());
    const auto child =
        startChild(command.words.front(), arguments,
                   {.standardInput = null.get(),
                    .standardOutput = null.get(),
                    .standardError = standardError < 0 ? null.get() : standardError});
    return child && waitForChild(*child) == 0;
}

bool isLoaded(const ServiceJob& job) {
    return succeeds(job.isLoaded, -1);
}

/// Runs the commands in their order. Returns the first that fails although it may not.
std::optional<std::string> failedOf(const std::vector<ServiceJob::Command>& commands) {
    for (const ServiceJob::Command& command : commands) {
        if (succeeds(command, command.mayFail ? -1 : STDERR_FILENO) || command.mayFail)
            continue;
        std::string text;
        for (const std::string& word : command.words)
            text += (text.empty() ? "" : " ") + word;
        return text;
    }
    return std::nullopt;
}

/// Stops the service. Tells whether the system has let go of it, which may take a moment.
bool stop(const ServiceJob& job) {
    static_cast<void>(failedOf(job.stop));
    for (int i = 0; i < maxPauses && isLoaded(job); ++i)
        std::this_thread::sleep_for(pause);
    return !isLoaded(job);
}

bool isInstalled(const ServiceJob& job) {
    return DiskPath::linkStatus(job.path).has_value();
}

bool writeFile(const ServiceJob& job) {
    const std::filesystem::path path(job.path);
    const auto folder = Folder::make(path.parent_path().string(), folderMode);
    return folder && folder->replace(path.filename().string(), job.text, fileMode);
}

void removeFile(const ServiceJob& job) {
    const std::filesystem::path path(job.path);
    if (const auto folder = Folder::open(path.parent_path().string()))
        folder->remove(path.filename().string());
}

int install(const ServiceJob& job) {
    if (isInstalled(job) && !stop(job))
        return complain("the service does not stop", SessionExit::refused);
    const bool isServed = ControlClient::connect().has_value();
    if (!writeFile(job))
        return complain(job.path + " can't be written", SessionExit::refused);
    if (const auto failed = failedOf(job.start)) {
        static_cast<void>(stop(job));
        removeFile(job);
        return complain("failed: " + *failed, SessionExit::refused);
    }
    writeStandardOutput("installed: " + job.path + "\n");
    if (isServed)
        writeStandardOutput("another host serves; the service follows when that one ends\n");
    return SessionExit::success;
}

int remove(const ServiceJob& job) {
    if (!stop(job))
        return complain("the service does not stop", SessionExit::refused);
    removeFile(job);
    if (isInstalled(job))
        return complain(job.path + " can't be removed", SessionExit::refused);
    writeStandardOutput("removed\n");
    return SessionExit::success;
}

int printStatus(const ServiceJob& job) {
    const bool isThere = isInstalled(job);
    const bool isActive = isThere && isLoaded(job);
    writeStandardOutput((isThere ? "installed: " + job.path : "not installed") + "\n");
    if (isThere)
        writeStandardOutput(isActive ? "the system has it\n" : "the system does not have it\n");
    return isActive ? SessionExit::success : SessionExit::refused;
}

} // namespace

int service(std::string_view what) {
    const auto job = ownJob();
    if (!job)
        return complain("the path of this program or of your home folder can't be written down",
                        SessionExit::refused);
    if (what == "install")
        return install(*job);
    if (what == "remove")
        return remove(*job);
    if (what == "status")
        return printStatus(*job);
    return complain("service takes install, remove or status", SessionExit::usage);
}

} // namespace velmo
