#pragma once

#include "core/apps/Inventory.h"
#include "core/support/Value.h"

#include <optional>
#include <string>
#include <string_view>

/// Property lists and the bundles that they describe, read by CoreFoundation on a Mac
/// (platform/host/macos) and by libplist elsewhere (platform/host/linux).
namespace velmo::PropertyList {

/// Returns the whole list, dates and the like as values without a kind. Absent if the bytes exceed
/// `PropertyListBounds`, or are damaged as far as the reader finds out.
std::optional<Value> parse(std::string_view bytes);

/// Reads and parses a file; absent too where `readFile` reads nothing.
std::optional<Value> read(const std::string& path);

/// Returns what a bundle says of itself, as `Inventory::Services` asks for it.
Inventory::BundleInformation bundle(const std::string& path);

} // namespace velmo::PropertyList
