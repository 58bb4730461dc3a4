#pragma once

#include <string_view>
#include <vector>

/// Paths as text: bytes between slashes, as the kernel sees them. Nothing here asks the disk.
namespace velmo::PathText {

/// Begins with "/", is 2...1024 bytes of valid UTF-8 without control characters (Text::isControl),
/// and has neither empty pieces nor "." nor "..". One trailing slash is let pass; "/" alone is not
/// clean.
bool isCleanAbsolute(std::string_view path);

/// The same without the trailing slash: the path of a file.
bool isCleanAbsoluteFile(std::string_view path);

/// The non-empty pieces between slashes.
std::vector<std::string_view> pieces(std::string_view path);

bool isDotOrDotDot(std::string_view piece);

/// Without its one trailing slash, if it has one: "" for "/".
std::string_view withoutTrailingSlash(std::string_view path);

/// What follows the last slash; the whole text when there is none.
std::string_view lastComponent(std::string_view path);

/// What stands before the last slash, "/" for what lies in the root. Of "/", and of a text without
/// a slash, "/" too, so that going up always ends there.
std::string_view parent(std::string_view path);

/// Whether the test holds for the path or any folder above it, "/" included.
template<class Test>
bool holdsUpToTheRoot(std::string_view path, const Test& test) {
    while (!test(path)) {
        if (path == "/")
            return false;
        path = parent(path);
    }
    return true;
}

} // namespace velmo::PathText
