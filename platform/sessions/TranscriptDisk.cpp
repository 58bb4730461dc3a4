#include "platform/sessions/TranscriptDisk.h"

#include "core/support/Text.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/DiskPath.h"
#include "platform/posix/Io.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cstdio>
#include <utility>

namespace velmo {

namespace {

using Fault = TranscriptFiles::Fault;

constexpr mode_t fileMode = 0600;

/// Opens a file and locks it, without waiting for the other end of a FIFO or for another lock.
std::expected<Descriptor, Fault> openLocked(const std::string& path, int flags) {
    Descriptor file(retryInterrupted([&] {
        return ::open(path.c_str(),
                      flags | O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC,
                      fileMode);
    }));
    struct stat status{};
    if (!file || !isRegularFile(file.get()) || ::fstat(file.get(), &status) != 0
        || status.st_uid != ::getuid())
        return std::unexpected(Fault::unusable);
    if (retryInterrupted([&] { return ::flock(file.get(), LOCK_EX | LOCK_NB); }) != 0)
        return std::unexpected(Fault::busy);
    return file;
}

class DiskFile final : public TranscriptFile {
public:
    DiskFile(std::string path, Descriptor file, std::uint64_t size)
        : path_(std::move(path)), file_(std::move(file)), size_(size) {}

    [[nodiscard]] std::uint64_t size() const override { return size_; }

    [[nodiscard]] bool append(ByteView output) override {
        size_ += output.size();
        return writeAll(file_.get(), textOf(output));
    }

    [[nodiscard]] bool turn() override {
        if (isInPlace() && !moveAside())
            return false;
        auto next = openLocked(path_, O_CREAT | O_EXCL);
        if (!next)
            return false;
        file_ = *std::move(next);
        size_ = 0;
        return true;
    }

private:
    /// Tells whether the path still leads to the file: the user may have moved or removed it.
    [[nodiscard]] bool isInPlace() const {
        struct stat status{};
        const auto byPath = DiskPath::linkStatus(path_);
        return byPath && ::fstat(file_.get(), &status) == 0 && status.st_ino == byPath->st_ino
               && status.st_dev == byPath->st_dev;
    }

    /// Does not replace a file to which another session writes, nor anything but a file.
    [[nodiscard]] bool moveAside() const {
        const std::string older = path_ + ".1";
        if (DiskPath::linkStatus(older) && !openLocked(older, 0))
            return false;
        return std::rename(path_.c_str(), older.c_str()) == 0;
    }

    std::string path_;
    Descriptor file_;
    std::uint64_t size_;
};

} // namespace

std::expected<std::unique_ptr<TranscriptFile>, Fault>
TranscriptDisk::open(const std::string& path) {
    auto file = openLocked(path, O_CREAT);
    if (!file)
        return std::unexpected(file.error());
    struct stat status{};
    if (::fchmod(file->get(), fileMode) != 0 || ::fstat(file->get(), &status) != 0
        || std::cmp_greater(status.st_size, Transcript::maxFile))
        return std::unexpected(Fault::unusable);
    return std::make_unique<DiskFile>(path, *std::move(file),
                                      static_cast<std::uint64_t>(status.st_size));
}

} // namespace velmo
