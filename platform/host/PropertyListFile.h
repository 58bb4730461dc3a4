#pragma once

#include <optional>
#include <string>

/// Reads the files of property lists, in the same way on every platform.
namespace velmo::PropertyList {

/// Returns the content of a regular file; absent too if it is longer than
/// `PropertyListBounds::maxBytes`. Links are followed. A FIFO of that name makes nobody wait.
std::optional<std::string> readFile(const std::string& path);

/// The file that describes a bundle, and the bundle that it lies in.
struct BundleFile {
    std::string bundle;
    std::string content;
};

/// Reads the file that describes a bundle: "Contents/Info.plist", or "Info.plist" where `readFile`
/// reads nothing there. An application that was made for phones and tablets lies in a wrapper, to
/// which "WrappedBundle" leads, and has neither itself.
std::optional<BundleFile> readInformation(const std::string& bundle);

} // namespace velmo::PropertyList
