#pragma once

#include "platform/posix/Descriptor.h"

#include <sys/types.h>

#include <string>
#include <string_view>

namespace velmo {

/// The calls by which `Folder` changes the disk. This class keeps them apart so that a test can
/// make any call fail and cut the power after each. Reading changes nothing and is not part of it.
class Disk {
public:
    /// Returns the disk of this machine.
    static Disk& ofThisMachine();

    virtual ~Disk() = default;

    /// Makes one folder. Returns 0, or the error as in errno.
    virtual int makeFolder(const std::string& path, mode_t mode);

    /// Makes an empty file for writing. Returns an empty descriptor if the name is taken, even by a
    /// link, or on any error.
    virtual Descriptor createFile(int folder, const std::string& name, mode_t mode);

    // Tell whether the whole change was made.
    virtual bool write(int file, std::string_view content);

    /// Waits until the drive itself has a file's content, or the names in a folder.
    virtual bool synchronize(int fileOrFolder);

    /// Gives the file a new name in the same folder. A file that had that name is replaced.
    virtual bool rename(int folder, const std::string& from, const std::string& to);
    virtual bool remove(int folder, const std::string& name);
};

} // namespace velmo
