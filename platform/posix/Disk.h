#pragma once

#include "platform/posix/Descriptor.h"

#include <sys/types.h>

#include <string>
#include <string_view>

namespace velmo {

/// The calls by which `Folder` changes the disk. They stand apart so that a test can let any of
/// them fail and cut the power after each. What is only read needs no such place.
class Disk {
public:
    /// Returns the disk of this machine.
    static Disk& ofThisMachine();

    virtual ~Disk() = default;

    /// Makes one folder. Returns 0, or the error as in errno.
    virtual int makeFolder(const std::string& path, mode_t mode);

    /// Makes an empty file for writing. The descriptor is none if the name is taken, even by a
    /// link, or on any error.
    virtual Descriptor createFile(int folder, const std::string& name, mode_t mode);

    // Each of these tells whether it was done, the whole of it.
    virtual bool write(int file, std::string_view content);

    /// Waits until the drive itself has what was written into a file, or which names a folder has.
    virtual bool synchronize(int fileOrFolder);

    /// Gives the file a new name in the same folder, in place of whatever bore that name.
    virtual bool rename(int folder, const std::string& from, const std::string& to);
    virtual bool remove(int folder, const std::string& name);
};

} // namespace velmo
