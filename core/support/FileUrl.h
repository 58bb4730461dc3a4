#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// A place in the file system in the form that the platform's services take and give.
struct FileUrl {
    std::string path; ///< as it was given: not resolved, not normalised

    /// Returns "file://" and the path, with %XX in capitals for every byte that may not stand in
    /// the path of an address. Absent for a path that is not absolute: its first part would be
    /// taken for a host.
    [[nodiscard]] std::optional<std::string> text() const;

    /// Reads the path of an address that begins with "file://", in small letters, and decodes its
    /// escapes once; without a path it is "". A host is ignored, and so are a query and a fragment.
    /// Absent where `Uri::parse` refuses the address, and when the decoded path contains NUL or is
    /// not UTF-8.
    static std::optional<FileUrl> parse(std::string_view text);

    bool operator==(const FileUrl&) const = default;
};

} // namespace velmo
