#pragma once

#include "platform/posix/Descriptor.h"

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Small files inside one folder, reached through an open descriptor of the folder: what was
/// checked is what is used, even if somebody moves or replaces its name meanwhile. Links are never
/// followed, neither at the folder's own name nor at a file's.
namespace velmo {

class Folder {
public:
    /// Absent when the last part of the path is no folder (a link is none).
    static std::optional<Folder> open(const std::string& path);

    /// The same, after making the folder and what is missing above it with this mode.
    static std::optional<Folder> make(const std::string& path, mode_t mode);

    [[nodiscard]] std::optional<uid_t> owner() const;
    [[nodiscard]] bool setMode(mode_t mode) const;

    /// Whether a regular file of that name is there, readable or not.
    [[nodiscard]] bool hasFile(const char* name) const;

    /// The content of a regular file; absent too when it is longer than `limit` bytes.
    [[nodiscard]] std::optional<std::string> read(const char* name, std::size_t limit) const;

    /// Replaces the file, or makes it, so that after a crash or a power cut at any moment either
    /// the old or the new content is there, whole. False: the old one is, or none at all.
    [[nodiscard]] bool replace(const char* name, std::string_view content, mode_t mode) const;

    /// Errors are ignored.
    void remove(const char* name) const;

private:
    explicit Folder(Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

    Descriptor descriptor_;
};

} // namespace velmo
