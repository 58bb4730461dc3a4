#pragma once

#include "platform/posix/Descriptor.h"
#include "platform/posix/Disk.h"

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Small files inside one folder, reached through an open descriptor of the folder. So the folder
/// that was checked is the one that is used, even if another process moves or replaces its name
/// meanwhile. Links are never followed, neither at the folder's own name nor at a file's.
class Folder {
public:
    /// Opens a folder; absent if the last part of the path is anything else, a link included. The
    /// disk must outlive the folder.
    static std::optional<Folder> open(const std::string& path, Disk& disk = Disk::ofThisMachine());

    /// Makes a folder and its missing parents with this mode, and opens it. Absent if any of this
    /// fails, and also if the folder's own name might not survive a power cut.
    static std::optional<Folder> make(const std::string& path, mode_t mode,
                                      Disk& disk = Disk::ofThisMachine());

    /// Returns the user id of the folder's owner.
    [[nodiscard]] std::optional<uid_t> owner() const;
    [[nodiscard]] bool setMode(mode_t mode) const;

    /// Tells whether a regular file of that name exists, readable or not.
    [[nodiscard]] bool hasFile(const std::string& name) const;

    /// Returns the content of a regular file, cut to its first `maxSize` bytes.
    [[nodiscard]] std::optional<std::string> read(const std::string& name,
                                                  std::size_t maxSize) const;

    /// Replaces or makes the file. After a crash or a power cut at any moment the file has either
    /// the old or the new content, whole. Returns true if the file has the new content; after false
    /// it has the old content or does not exist.
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
