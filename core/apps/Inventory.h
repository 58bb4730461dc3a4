#pragma once

#include "core/apps/AppRecord.h"
#include "core/apps/NameComparison.h"
#include "core/support/FileUrl.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Lists the installed applications.
namespace velmo::Inventory {

/// What a folder contains under one name.
struct Entry {
    std::string name;
    bool isDirectory = false; ///< also for a link to a directory
};

/// What the property list in a bundle says of it. A key that is missing, or whose value is no text,
/// is absent.
struct BundleInformation {
    std::optional<std::string> displayName; ///< "CFBundleDisplayName"
    std::optional<std::string> name;        ///< "CFBundleName"
    std::optional<std::string> version;     ///< "CFBundleShortVersionString"
    std::optional<std::string> identifier;  ///< "CFBundleIdentifier"

    bool operator==(const BundleInformation&) const = default;
};

/// The questions of a scan that only the platform can answer.
struct Services {
    /// Returns what lies directly in a folder, in any order, without "." and ".."; nothing if the
    /// folder can't be listed. This is `listFolder` of platform/host.
    std::function<std::vector<Entry>(const std::string& path)> entries;

    /// Returns what the bundle at the path says of itself: all absent if there is no bundle or its
    /// property list is damaged. This is `PropertyList::bundle` of platform/host.
    std::function<BundleInformation(const std::string& path)> bundle;

    /// Compares names with `DigitOrder::byCharacter`. This is `localisedComparison` of
    /// platform/host.
    NameComparison byCharacter;

    /// Is told after each application how many have been found so far; may be left empty. A scan of
    /// files that the system has not read before takes long enough to show this.
    std::function<void(std::size_t found)> progress = {};
};

/// Returns the folders in which applications are usually installed, the user's own last.
std::array<FileUrl, 3> defaultDirectories(std::string_view home);

/// Returns the applications in the directories and in the folders directly below them, ordered by
/// name, and those of one name by the bytes of their paths. An application is what has a name that
/// ends in ".app", in lower case; a name that begins with "." is left out. A path that is reached
/// in several ways is listed once, as it was reached first; paths are compared with "." and ".."
/// removed, without resolving links. Reads much of the disk, on the calling thread.
std::vector<AppRecord> scan(std::span<const FileUrl> directories, const Services& services);

} // namespace velmo::Inventory
