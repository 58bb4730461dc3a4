#pragma once

#include "core/apps/Inventory.h"
#include "core/support/Value.h"

#include <optional>
#include <string>
#include <string_view>

/// Property lists and the bundles that they describe. What the files are is the same on every
/// platform; reading them is CoreFoundation's job on a Mac and libplist's elsewhere.
namespace velmo::PropertyList {

/// The content of a regular file, links followed, of at most `PropertyListBounds::maxBytes`; a FIFO
/// of the name makes nobody wait.
std::optional<std::string> readFile(const std::string& path);

/// The content of the file that describes a bundle: "Contents/Info.plist", or "Info.plist" where
/// there is none that `readFile` reads.
std::optional<std::string> readInformation(const std::string& bundle);

// Each platform's own: platform/macos, platform/portable.

/// The whole list; dates and the like as values without a kind. Absent beyond `PropertyListBounds`,
/// and when it is damaged as far as the reader finds out.
std::optional<Value> parse(std::string_view bytes);

/// For `Inventory::Services`.
Inventory::BundleInformation bundle(const std::string& path);

inline std::optional<Value> read(const std::string& path) {
    return readFile(path).and_then(parse);
}

} // namespace velmo::PropertyList
