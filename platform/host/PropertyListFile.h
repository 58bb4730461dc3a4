#pragma once

#include <optional>
#include <string>

/// The files that hold property lists, which are the same on every platform.
namespace velmo::PropertyList {

/// Returns the content of a regular file, links followed, or nothing if it is longer than
/// `PropertyListBounds::maxBytes`. A FIFO of that name makes nobody wait.
std::optional<std::string> readFile(const std::string& path);

/// Returns the content of the file that describes a bundle: "Contents/Info.plist", or "Info.plist"
/// where `readFile` reads nothing there.
std::optional<std::string> readInformation(const std::string& bundle);

} // namespace velmo::PropertyList
