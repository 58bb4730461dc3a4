#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Paths as text: bytes between slashes, as the kernel sees them. Nothing here asks the disk.
namespace velmo::PathText {

/// Tells whether the path begins with "/", is 2 to 1024 bytes of valid UTF-8 without control
/// characters (`Text::isControl`), and has neither empty pieces nor "." nor "..". A single
/// trailing slash is accepted; "/" alone is not clean.
bool isCleanAbsolute(std::string_view path);

/// Tells the same of the path of a file, which has no trailing slash.
bool isCleanAbsoluteFile(std::string_view path);

/// Returns the non-empty pieces between slashes.
std::vector<std::string_view> pieces(std::string_view path);

bool isDotOrDotDot(std::string_view piece);

/// Tells whether any piece is "..".
bool goesUp(std::string_view path);

/// Returns the path of a name in a folder, with one slash between them.
std::string join(std::string_view folder, std::string_view name);

/// Returns the path without its one trailing slash, if it has one: "" for "/".
std::string_view withoutTrailingSlash(std::string_view path);

/// Returns the path without any trailing slash: "" for "//".
std::string_view withoutTrailingSlashes(std::string_view path);

/// Returns what follows the last slash, which is "" after a trailing one; the whole text if it
/// has no slash.
std::string_view lastComponent(std::string_view path);

/// Returns what stands before the last slash, and "/" for what lies in the root. Of "/", and of a
/// text without a slash, it is "/" too, so that going up always ends there.
std::string_view parent(std::string_view path);

/// Tells whether the test is true of the path or of any folder above it, "/" included.
template<class Test>
bool anyUpToTheRoot(std::string_view path, const Test& test) {
    while (!test(path)) {
        if (path == "/")
            return false;
        path = parent(path);
    }
    return true;
}

} // namespace velmo::PathText
