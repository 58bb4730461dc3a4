#include "platform/phone/PhoneFolder.h"

#include "core/support/PathText.h"
#include "platform/host/PtyHostFileSystem.h"
#include "platform/phone/StatePlace.h"
#include "platform/posix/DiskPath.h"
#include "platform/posix/Io.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>

namespace velmo {

namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;
constexpr std::size_t maxRecord = 65536; ///< bytes; the greatest number of devices takes a third

std::optional<std::string> statePlace() {
    const char* const home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe)
    const bool isNamed = home != nullptr && *home != '\0';
    const auto environment = isNamed ? Pty::Environment{{"HOME", home}} : Pty::Environment();
    const auto path = Pty::HostFileSystem().home(environment);
    return path && path->starts_with('/') ? std::optional(phoneStatePlace(*path)) : std::nullopt;
}

} // namespace

std::expected<PhoneFolder, std::string> PhoneFolder::make() {
    const auto path = statePlace();
    if (!path)
        return std::unexpected("there is no home folder");
    auto folder = Folder::make(*path, folderMode);
    if (!folder)
        return std::unexpected(*path
                               + (DiskPath::linkStatus(*path) ? " is a link or a file, not a folder"
                                                              : " can't be made"));
    if (folder->owner() != ::getuid())
        return std::unexpected(*path + " belongs to another user");
    if (!folder->setMode(folderMode))
        return std::unexpected(*path + " can't be written to");
    return PhoneFolder(*path, *std::move(folder));
}

std::optional<std::string> PhoneFolder::commandSocketPath() {
    return statePlace().transform(
        [](const std::string& place) { return PathText::join(place, commandSocket); });
}

std::expected<Descriptor, std::string> PhoneFolder::lock() const {
    const std::string path = PathText::join(path_, lockFile);
    Descriptor file(retryInterrupted(
        [&] { return ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, fileMode); }));
    if (!file)
        return std::unexpected(path + " can't be opened");
    if (retryInterrupted([&] { return ::flock(file.get(), LOCK_EX | LOCK_NB); }) != 0)
        return std::unexpected("another velmo-phone serves already");
    return file;
}

std::optional<PhoneRecord> PhoneFolder::read() const {
    if (!folder_.hasFile(recordFile))
        return PhoneRecord();
    const auto content = folder_.read(recordFile, maxRecord + 1);
    return content && content->size() <= maxRecord ? decodeRecord<PhoneRecord>(*content)
                                                   : std::nullopt;
}

bool PhoneFolder::write(const PhoneRecord& record) const {
    const auto content = encodeJson(record);
    return content && folder_.replace(recordFile, *content, fileMode);
}

} // namespace velmo
