#pragma once

#include "core/apps/Inventory.h"
#include "core/support/Value.h"

#include <optional>
#include <string>
#include <string_view>

/// Reads property lists and the bundles that they describe, by CoreFoundation on a Mac
/// (platform/host/macos) and by libplist elsewhere (platform/host/linux).
namespace velmo::PropertyList {

/// Returns the whole list, in which dates and the like are values without a kind. Absent if
/// `PropertyListBounds` refuses the bytes, or the reader finds them damaged.
std::optional<Value> parse(std::string_view bytes);

/// Reads and parses a file; absent too if `readFile` (PropertyListFile.h) reads nothing.
std::optional<Value> read(const std::string& path);

/// Returns what a bundle tells about itself, as `Inventory::Services` asks for it; what it does not
/// tell, or not as text, is absent.
Inventory::BundleInformation bundle(const std::string& path);

} // namespace velmo::PropertyList
