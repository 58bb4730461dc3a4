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

/// Cleans and bounds the Finder's selection for the phone, and later checks that files which the
/// phone names by path are still the ones that the phone was shown.
namespace velmo::FinderSelectionParse {

inline constexpr std::size_t maxItems = 200; ///< selected files, and lines of a check

struct Selection {
    std::optional<std::string> folder; ///< of the front window
    std::vector<std::string> items;    ///< in the Finder's order

    static constexpr auto fields =
        std::tuple{field("folder", &Selection::folder), field("items", &Selection::items)};
    bool operator==(const Selection&) const = default;
};

/// Sent to the phone instead of a selection if the Finder refuses to be automated.
struct Permission {
    std::string permission = "automation";

    static constexpr auto fields = std::tuple{field("permission", &Permission::permission)};
    bool operator==(const Permission&) const = default;
};

/// Returns the path without trailing slashes, or nothing if it is missing, relative, not UTF-8,
/// contains a control character (U+0000 to U+001F, U+007F) or a component "..", or has more than
/// 4096 characters before slashes are removed. Components "." and doubled slashes stay.
std::optional<std::string> clean(std::optional<std::string_view> path);

/// Returns the cleaned folder and the first `maxItems` cleaned items. Items that can't be cleaned,
/// and repetitions, are left out.
Selection selection(std::optional<std::string_view> folder, std::span<const std::string> items);

/// Identifies a file as long as it exists, whatever its name.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const FileIdentity&) const = default;
};

/// Returns the identity of the file at the path, without following a symbolic link; absent if
/// nothing is at the path. This is `lstatIdentity` of platform/host, both when the lines are made
/// and when they are checked.
using Lstat = std::function<std::optional<FileIdentity>(std::string_view path)>;

/// Every file is still the same. The paths are in the order of the lines.
struct Ok {
    std::vector<std::string> paths;
    bool operator==(const Ok&) const = default;
};

/// The request is malformed.
struct Bad {
    bool operator==(const Bad&) const = default;
};

/// A file is gone, or another one is at its path.
struct Changed {
    bool operator==(const Changed&) const = default;
};

using Check = std::variant<Ok, Bad, Changed>;

/// Checks 1 to `maxItems` lines "device:inode:path", the numbers in decimal, the path in the form
/// that `clean` returns. The first line with an error decides. A file may be replaced right after
/// the check, so that a program that opens it does so without following links, and compares again.
Check identityPaths(std::span<const std::string> lines, const Lstat& lstat);

} // namespace velmo::FinderSelectionParse
