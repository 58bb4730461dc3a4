#pragma once

#include "platform/posix/Descriptor.h"
#include "platform/posix/Disk.h"

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Small files inside one folder, reached through an open descriptor of the folder: what was
/// checked is what is used, even if somebody moves or replaces its name meanwhile. Links are never
/// followed, neither at the folder's own name nor at a file's.
class Folder {
public:
    /// Opens a folder; absent if the last part of the path is anything else, a link included. The
    /// caller keeps the disk alive as long as the folder.
    static std::optional<Folder> open(const std::string& path, Disk& disk = Disk::ofThisMachine());

    /// Opens a folder after making it, and what is missing above it, with this mode. Absent too if
    /// the folder's own name might not survive a power cut.
    static std::optional<Folder> make(const std::string& path, mode_t mode,
                                      Disk& disk = Disk::ofThisMachine());

    /// Returns the user id of the folder's owner.
    [[nodiscard]] std::optional<uid_t> owner() const;
    [[nodiscard]] bool setMode(mode_t mode) const;

    /// Tells whether a regular file of that name is there, readable or not.
    [[nodiscard]] bool hasFile(const std::string& name) const;

    /// Returns the content of a regular file, of a longer one only the first `maxSize` bytes.
    [[nodiscard]] std::optional<std::string> read(const std::string& name,
                                                  std::size_t maxSize) const;

    /// Replaces the file, or makes it, so that after a crash or a power cut at any moment either
    /// the old or the new content is there, whole. After true it is the new one; after false the
    /// old one or none.
    [[nodiscard]] bool replace(const std::string& name, std::string_view content,
                               mode_t mode) const;

    /// Removes the file. Errors are ignored.
    void remove(const std::string& name) const;

private:
    Folder(Descriptor descriptor, Disk& disk) : descriptor_(std::move(descriptor)), disk_(&disk) {}

    Descriptor descriptor_;
    Disk* disk_;
};

} // namespace velmo
