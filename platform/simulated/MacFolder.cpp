#include "platform/simulated/MacFolder.h"

#include "core/power/PowerService.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Folder.h"
#include "platform/posix/Io.h"
#include "platform/posix/SocketAddress.h"
#include "platform/simulated/RecordFault.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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
/// wait while another process has the lock. Empty on failure, with errno set.
Descriptor lock(const fs::path& path, int mode) {
    Descriptor file(retryInterrupted(
        [&] { return ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, fileMode); }));
    if (file && retryInterrupted([&] { return ::flock(file.get(), mode); }) != 0) {
        const int error = errno;
        file.reset();
        errno = error;
    }
    return file;
}

} // namespace

MacFolder::MacFolder(const fs::path& absolutePath) : root_(absolutePath.lexically_normal()) {
    if (!root_.has_filename()) // it ended in a slash
        root_ = root_.parent_path();
}

std::expected<MacFolder, std::string> MacFolder::named(const std::string& name) {
    if (name.empty())
        return std::unexpected("an empty name names no folder");
    std::error_code error;
    const fs::path path = fs::absolute(name, error);
    if (error)
        return std::unexpected(
            "the current folder is gone; name the Mac's folder by a path from /");
    MacFolder mac(path);
    if (!socketAddress(mac.socket(powerDaemonMachService)))
        return std::unexpected("the path of '" + mac.root_.string()
                               + "' is too long for a socket in it");
    return mac;
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

std::string MacFolder::complaint() const {
    if (!exists())
        return "there is no simulated Mac in " + root_.string()
               + "; make one with: velmo-mac create FOLDER";
    const auto folder = Folder::open(root_);
    const auto content = folder ? folder->read(machineFile, maxMachineFile) : std::nullopt;
    const auto fault = content ? faultOf<SimulatedMac>(*content) : "it can't be read";
    return std::string(machineFile) + " in " + root_.string()
           + " is not in order: " + fault.value_or("it is being changed; try again");
}

bool MacFolder::exists() const {
    std::error_code unknown;
    return fs::exists(fs::symlink_status(root_ / machineFile, unknown));
}

fs::path MacFolder::daemonLock() const {
    return inside("/var/run") / "daemon.lock";
}

std::expected<Descriptor, std::error_code> MacFolder::serve() const {
    using namespace std::chrono_literals;
    // The pmset that a killed daemon was starting has the daemon's descriptors for an instant
    // longer.
    for (int tries = 0;; ++tries) {
        Descriptor right = lock(daemonLock(), LOCK_EX | LOCK_NB);
        const std::error_code error(right ? 0 : errno, std::generic_category());
        if (right && isServedBy(right))
            return right;
        if (tries == 50 || (error && error != std::errc::operation_would_block))
            return std::unexpected(error);
        std::this_thread::sleep_for(20ms);
    }
}

bool MacFolder::isServedBy(const Descriptor& right) const {
    struct stat ours{};
    struct stat there{};
    return ::fstat(right.get(), &ours) == 0 && ::stat(daemonLock().c_str(), &there) == 0
           && ours.st_dev == there.st_dev && ours.st_ino == there.st_ino;
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
    // A Mac's own temporary folder leaves hardly any room in a socket's address for a whole name.
    return inside("/var/run") / (std::string(service.substr(service.rfind('.') + 1)) + ".sock");
}

fs::path MacFolder::inside(std::string_view absolutePath) const {
    return root_ / fs::path(absolutePath).relative_path();
}

} // namespace velmo
