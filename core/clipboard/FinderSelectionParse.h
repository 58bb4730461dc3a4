#pragma once

#include "core/support/Record.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// What the Finder says is selected, cleaned and bounded, and the later check that files named by
/// path are still the very same ones.
namespace velmo::FinderSelectionParse {

inline constexpr std::size_t maxItems = 200;

struct Selection {
    std::optional<std::string> folder; ///< the front window's
    std::vector<std::string> items;    ///< in the Finder's order

    static constexpr auto fields =
        std::tuple{field("folder", &Selection::folder), field("items", &Selection::items)};
    bool operator==(const Selection&) const = default;
};

/// Told instead when the Finder refuses to be automated.
struct Permission {
    std::string permission = "automation";

    static constexpr auto fields = std::tuple{field("permission", &Permission::permission)};
    bool operator==(const Permission&) const = default;
};

/// The path without trailing slashes. Absent when it is relative, has more than 4096 characters as
/// it is given, holds a control character (U+0000 to U+001F, U+007F) or a component "..", or is not
/// UTF-8. Neither "." nor doubled slashes are touched.
std::optional<std::string> clean(std::optional<std::string_view> path);

/// The cleaned items without repetitions, at most `maxItems` of them, and the cleaned folder.
Selection selection(std::optional<std::string_view> folder, std::span<const std::string> items);

/// By which the system knows a file as long as it exists, whatever its name.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const FileIdentity&) const = default;
};

/// Of what bears this name, a link not followed; absent when nothing does. `lstatIdentity` of
/// platform/host; whoever offers the lines must ask it too.
using Lstat = std::function<std::optional<FileIdentity>(std::string_view path)>;

/// Every path, in the order of the lines.
struct Ok {
    std::vector<std::string> paths;
    bool operator==(const Ok&) const = default;
};

/// The request is malformed.
struct Bad {
    bool operator==(const Bad&) const = default;
};

/// A file is gone or another one bears its name.
struct Changed {
    bool operator==(const Changed&) const = default;
};

using Check = std::variant<Ok, Bad, Changed>;

/// Lines "device:inode:path", the numbers in decimal, the path in the form that `clean` gives; 1 to
/// `maxItems` of them. The first line with a fault decides. The answer holds for that moment only:
/// whoever opens a file afterwards does so without following links, and compares again.
Check identityPaths(std::span<const std::string> lines, const Lstat& lstat);

} // namespace velmo::FinderSelectionParse
