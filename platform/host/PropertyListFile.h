#pragma once

#include <optional>
#include <string>

/// Reads the files of property lists, in the same way on every platform.
namespace velmo::PropertyList {

/// Returns the content of a regular file; absent too if it is longer than
/// `PropertyListBounds::maxBytes`. Links are followed. The call does not wait, even if the path
/// names a FIFO.
std::optional<std::string> readFile(const std::string& path);

/// The file that describes a bundle, and the bundle that it lies in.
struct BundleFile {
    std::string bundle;
    std::string content;
};

/// Reads the file that describes a bundle: "Contents/Info.plist", or "Info.plist" where `readFile`
/// reads nothing there. The bundle of an application that was made for phones and tablets has
/// neither, but a "WrappedBundle" that leads to one that has.
std::optional<BundleFile> readInformation(const std::string& bundle);

} // namespace velmo::PropertyList
