#pragma once

#include <optional>
#include <string>

namespace velmo {

/// A place in the file system in the form that the platform's services take and give.
struct FileUrl {
    std::string path; ///< as it was given: not resolved, not normalised

    /// "file://" and the path, every byte that may not stand in the path of an address as %XX in
    /// capitals. Absent for a path that is not absolute: its first part would be taken for a host.
    [[nodiscard]] std::optional<std::string> text() const;

    bool operator==(const FileUrl&) const = default;
};

} // namespace velmo
