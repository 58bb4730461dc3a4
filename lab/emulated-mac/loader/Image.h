#pragma once

#include "lab/emulated-mac/loader/MachOFile.h"

#include <cstdint>

namespace velmo {

/// The executable in memory, at the very addresses that it was linked for, without a slide. A
/// process makes one image.
class Image {
public:
    /// Maps the segments, binds the imports to their shims, and makes the unwind tables and the
    /// thread-locals known. Throws if the memory can't be had, or if an import other than a
    /// function lacks a shim.
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
