#pragma once

#include "core/apps/AppRecord.h"
#include "core/apps/NameComparison.h"
#include "core/support/FileUrl.h"

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The installed applications.
namespace velmo::Inventory {

struct Entry {
    std::string name;
    bool isDirectory = false; ///< links followed
};

/// What a bundle says of itself; absent where there is no text under the key.
struct BundleInformation {
    std::optional<std::string> displayName; ///< "CFBundleDisplayName"
    std::optional<std::string> name;        ///< "CFBundleName"
    std::optional<std::string> version;     ///< "CFBundleShortVersionString"
    std::optional<std::string> identifier;

    bool operator==(const BundleInformation&) const = default;
};

/// What a scan asks the platform.
struct Services {
    /// What lies directly in a folder, in any order, without "." and ".."; nothing when it can't be
    /// listed. `listFolder` of platform/host.
    std::function<std::vector<Entry>(const std::string& path)> entries;

    /// Nothing in it when there is no bundle at the path, or a damaged one.
    std::function<BundleInformation(const std::string& path)> bundle;

    /// A comparison with `DigitOrder::byCharacter`.
    NameComparison byCharacter;
};

/// Where applications are usually found, the user's own folder last.
std::array<FileUrl, 3> defaultDirectories(std::string_view home);

/// The bundles, whose names end in ".app" in small letters, in each directory and in the folders
/// directly in it that are no bundles themselves. Names that begin with "." are passed over. What
/// several directories hold under one path, compared without "." and ".." but with links as they
/// are, is listed once, as the first has it. Ordered by name, then by the bytes of the path. May
/// take its time.
std::vector<AppRecord> scan(std::span<const FileUrl> directories, const Services& services);

} // namespace velmo::Inventory
