#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// A place in the file system in the form that the platform's services take and give.
struct FileUrl {
    std::string path; ///< as it was given: not resolved, not normalised

    /// "file://" and the path, every byte that may not stand in the path of an address as %XX in
    /// capitals. Absent for a path that is not absolute: its first part would be taken for a host.
    [[nodiscard]] std::optional<std::string> text() const;

    /// The path of an address that begins with "file://", in small letters, its escapes decoded
    /// once; "" when there is none. A host is ignored, and so are a query and a fragment. Absent
    /// where `Uri::parse` refuses the address, and when the decoded path holds NUL or is not UTF-8.
    static std::optional<FileUrl> parse(std::string_view text);

    bool operator==(const FileUrl&) const = default;
};

} // namespace velmo
