#include "core/terminal/AllowedFolder.h"

#include "core/support/PathText.h"
#include "core/support/Text.h"

#include <algorithm>
#include <iterator>
#include <span>

namespace velmo::DevTerminal {

namespace {

/// Looks the piece up twice, in lower case and case-folded. The lists are in lower case, but a disk
/// that ignores letter case compares by full case folding, by which "ſ" opens what "s" names.
bool isDenied(std::string_view piece, std::span<const std::string_view> denied) {
    return Text::isOneOf(Text::lowercased(piece), denied)
           || Text::isOneOf(Text::caseFolded(piece), denied);
}

bool equalInLowercase(std::string_view a, std::string_view b) {
    return Text::lowercased(a) == Text::lowercased(b);
}

bool isAbsoluteUtf8(std::string_view path) {
    return path.starts_with('/') && Text::isValidUtf8(path);
}

} // namespace

bool isAllowedResolvedFolder(std::string_view path, std::string_view home) {
    if (!isAbsoluteUtf8(path) || !isAbsoluteUtf8(home))
        return false;
    // The paths are compared piece by piece, since text may change its length in lower case.
    const auto pieces = PathText::pieces(path);
    const auto homePieces = PathText::pieces(home);
    if (homePieces.empty() || pieces.size() <= homePieces.size())
        return false;
    const auto split = pieces.begin() + std::ssize(homePieces);
    if (!std::equal(pieces.begin(), split, homePieces.begin(), equalInLowercase))
        return false;
    const std::span below(split, pieces.end());
    return !isDenied(below.front(), deniedTop)
           && std::ranges::none_of(below, [](std::string_view piece) {
                  return PathText::isDotOrDotDot(piece) || isDenied(piece, deniedAnywhere);
              });
}

bool isAllowedFolder(std::string_view path, std::string_view home, const Resolve& resolve) {
    if (std::ranges::any_of(PathText::pieces(path), PathText::isDotOrDotDot))
        return false;
    const auto resolvedPath = resolve(path);
    const auto resolvedHome = resolve(home);
    return resolvedPath && resolvedHome && isAllowedResolvedFolder(*resolvedPath, *resolvedHome);
}

} // namespace velmo::DevTerminal
