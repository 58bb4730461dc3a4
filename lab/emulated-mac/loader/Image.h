#pragma once

#include "lab/emulated-mac/loader/MachOFile.h"

#include <cstdint>

namespace velmo {

/// The executable in memory, at the very addresses that it was linked for: there is no slide. One a
/// process.
class Image {
public:
    /// Maps the segments, binds the imports to their shims, and makes the unwind tables and the
    /// thread-locals known. Throws if the memory is not to be had or something that is no function
    /// has no shim.
    explicit Image(const MachOFile& file);

    /// Runs the initialisers and `main`, and returns its status.
    int run(int count, char** arguments, char** environment) const;

private:
    void map(const MachOFile& file);
    static void bind(const MachOFile& file);
    static void registerUnwindTables(const MachOFile::Section& frames);

    MachOFile file_;
};

} // namespace velmo
