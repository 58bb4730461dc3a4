#include "platform/simulated/MacFolder.h"

#include "platform/posix/Descriptor.h"
#include "platform/posix/Folder.h"
#include "platform/posix/Io.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <system_error>
#include <thread>

namespace velmo {

namespace fs = std::filesystem;

namespace {

constexpr const char* machineFile = "machine.json";
constexpr const char* lockFile = ".machine.lock";
constexpr std::size_t maxMachineFile = 65536; // bytes
constexpr mode_t fileMode = 0644;
constexpr mode_t folderMode = 0755;

/// Puts each member of valid compact JSON on a line of its own, for people who edit the file.
std::string indented(std::string_view json) {
    std::string result;
    std::size_t depth = 0;
    bool inText = false;
    const auto newLine = [&] { result.append("\n").append(2 * depth, ' '); };
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (inText && c == '\\') {
            result += c;
            result += json[++i];
            continue;
        }
        if (c == '"')
            inText = !inText;
        if (!inText && c == '}') {
            --depth;
            newLine();
        }
        result += c;
        if (inText)
            continue;
        if (c == '{')
            ++depth;
        if (c == '{' || c == ',')
            newLine();
        if (c == ':')
            result += ' ';
    }
    return result + '\n';
}

bool write(const Folder& folder, const SimulatedMac& mac) {
    const auto line = encodeJson(mac);
    return line && folder.replace(machineFile, indented(*line), fileMode);
}

std::optional<SimulatedMac> read(const Folder& folder) {
    const auto content = folder.read(machineFile, maxMachineFile);
    return content ? decodeRecord<SimulatedMac>(*content) : std::nullopt;
}

/// Locks a file, which it makes if need be, until the descriptor is closed. `mode` says whether to
/// wait while another process has the lock.
Descriptor lock(const fs::path& path, int mode) {
    Descriptor file(retryInterrupted(
        [&] { return ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, fileMode); }));
    if (file && retryInterrupted([&] { return ::flock(file.get(), mode); }) != 0)
        file.reset();
    return file;
}

} // namespace

MacFolder::MacFolder(const fs::path& root) : root_(fs::absolute(root).lexically_normal()) {
}

bool MacFolder::create(const fs::path& pmset) const {
    const auto folder = Folder::make(root_, folderMode);
    if (!folder || !Folder::make(inside("/usr/bin"), folderMode)
        || !Folder::make(inside("/var/run"), folderMode))
        return false;
    std::error_code error;
    fs::remove(this->pmset(), error);
    fs::create_symlink(fs::absolute(pmset), this->pmset(), error);
    SimulatedMac mac;
    mac.trustedUsers = {::getuid()};
    return !error && write(*folder, mac);
}

std::optional<SimulatedMac> MacFolder::load() const {
    const auto folder = Folder::open(root_);
    return folder ? read(*folder) : std::nullopt;
}

bool MacFolder::exists() const {
    std::error_code unknown;
    return fs::exists(fs::symlink_status(root_ / machineFile, unknown));
}

Descriptor MacFolder::serve() const {
    using namespace std::chrono_literals;
    const auto path = inside("/var/run") / "daemon.lock";
    // For an instant a killed daemon's descriptors live on in the pmset that it was starting.
    Descriptor right = lock(path, LOCK_EX | LOCK_NB);
    for (int tries = 0; !right && tries < 50; ++tries) {
        std::this_thread::sleep_for(20ms);
        right = lock(path, LOCK_EX | LOCK_NB);
    }
    return right;
}

bool MacFolder::update(const std::function<void(SimulatedMac&)>& change) const {
    if (!exists())
        return false;
    const Descriptor lock = velmo::lock(root_ / lockFile, LOCK_EX);
    const auto folder = Folder::open(root_);
    auto mac = lock && folder ? read(*folder) : std::nullopt;
    if (!mac)
        return false;
    change(*mac);
    return write(*folder, *mac);
}

fs::path MacFolder::socket(std::string_view service) const {
    return inside("/var/run") / (std::string(service) + ".sock");
}

fs::path MacFolder::inside(std::string_view absolutePath) const {
    return root_ / fs::path(absolutePath).relative_path();
}

} // namespace velmo
