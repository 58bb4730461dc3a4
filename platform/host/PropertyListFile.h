#pragma once

#include <optional>
#include <string>

/// Reads the files of property lists, in the same way on every platform.
namespace velmo::PropertyList {

/// Returns the content of a regular file; absent too if it is longer than
/// `PropertyListBounds::maxBytes`. Links are followed. A FIFO of that name makes nobody wait.
std::optional<std::string> readFile(const std::string& path);

/// Returns the content of the file that describes a bundle: "Contents/Info.plist", or "Info.plist"
/// if `readFile` reads nothing from the first.
std::optional<std::string> readInformation(const std::string& bundle);

} // namespace velmo::PropertyList
