#include "core/support/PathText.h"

#include "core/support/Text.h"

#include <algorithm>
#include <cstddef>

namespace velmo::PathText {

namespace {

constexpr std::size_t minLength = 2;
constexpr std::size_t maxLength = 1024;

/// The bytes before the first slash; they and the slash are removed from the text.
std::string_view takePiece(std::string_view& path) {
    const std::size_t slash = path.find('/');
    const std::string_view piece = path.substr(0, slash);
    path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    return piece;
}

} // namespace

bool isCleanAbsolute(std::string_view path) {
    if (path.size() < minLength || path.size() > maxLength || !path.starts_with('/')
        || !Text::isValidUtf8(path) || Text::hasControl(path))
        return false;
    for (std::string_view rest = path.substr(1); !rest.empty();) {
        const std::string_view piece = takePiece(rest);
        if (piece.empty() || isDotOrDotDot(piece))
            return false;
    }
    return true;
}

bool isCleanAbsoluteFile(std::string_view path) {
    return isCleanAbsolute(path) && !path.ends_with('/');
}

std::vector<std::string_view> pieces(std::string_view path) {
    std::vector<std::string_view> result;
    while (!path.empty()) {
        if (const std::string_view piece = takePiece(path); !piece.empty())
            result.push_back(piece);
    }
    return result;
}

bool isDotOrDotDot(std::string_view piece) {
    return piece == "." || piece == "..";
}

bool goesUp(std::string_view path) {
    const auto all = pieces(path);
    return std::ranges::find(all, "..") != all.end();
}

std::string join(std::string_view folder, std::string_view name) {
    std::string path(folder);
    if (!path.ends_with('/'))
        path += '/';
    return path.append(name);
}

std::string_view withoutTrailingSlash(std::string_view path) {
    if (path.ends_with('/'))
        path.remove_suffix(1);
    return path;
}

std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.ends_with('/'))
        path.remove_suffix(1);
    return path;
}

std::string_view lastComponent(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

std::string_view parent(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos || slash == 0 ? "/" : path.substr(0, slash);
}

} // namespace velmo::PathText
