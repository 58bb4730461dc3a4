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

/// An entry of a folder.
struct Entry {
    std::string name;
    bool isDirectory = false; ///< also for a link to a directory
};

/// The facts in a bundle's property list. A member is absent if its key is missing or has a value
/// that is not a text.
struct BundleInformation {
    std::optional<std::string> displayName; ///< "CFBundleDisplayName"
    std::optional<std::string> name;        ///< "CFBundleName"
    std::optional<std::string> version;     ///< "CFBundleShortVersionString"
    std::optional<std::string> identifier;  ///< "CFBundleIdentifier"

    bool operator==(const BundleInformation&) const = default;
};

/// The functions of the platform that a scan calls.
struct Services {
    /// Returns the entries directly in a folder, in any order, without "." and ".."; empty if the
    /// folder can't be listed. This is `listFolder` of platform/host.
    std::function<std::vector<Entry>(const std::string& path)> entries;

    /// Reads the property list of the bundle at the path. All members are absent if the bundle is
    /// missing or its property list is damaged. This is `PropertyList::bundle` of platform/host.
    std::function<BundleInformation(const std::string& path)> bundle;

    /// Compares names with `DigitOrder::byCharacter`. This is `localisedComparison` of
    /// platform/host.
    NameComparison byCharacter;

    /// Called after each application with the number found so far; may be left empty. A scan of
    /// files that the system has not read before takes long enough to show its progress.
    std::function<void(std::size_t found)> progress = {};
};

/// Returns the folders in which applications are usually installed, the user's own last.
std::array<FileUrl, 3> defaultDirectories(std::string_view home);

/// Returns the applications in the directories and in the folders directly below them, ordered by
/// name, and those of one name by the bytes of their paths. An entry with a name that ends in
/// ".app", in lower case, is an application. Entries with a name that begins with "." are left out,
/// folders too. A path that is reached in several ways is listed once, as it was reached first;
/// paths are compared with "." and ".." removed, without resolving links. The scan reads much of
/// the disk, on the calling thread.
std::vector<AppRecord> scan(std::span<const FileUrl> directories, const Services& services);

} // namespace velmo::Inventory
