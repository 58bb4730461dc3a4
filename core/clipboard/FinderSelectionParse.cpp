#include "core/clipboard/FinderSelectionParse.h"

#include "core/support/Ascii.h"
#include "core/support/Decimal.h"
#include "core/support/PathText.h"
#include "core/support/Text.h"

#include <algorithm>
#include <utility>

namespace velmo::FinderSelectionParse {

namespace {

constexpr std::size_t maxPath = 4096; // characters

struct Line {
    FileIdentity identity;
    std::string path;
};

/// Removes everything up to the first colon, and that colon, from the front of the text. Returns
/// the removed number; absent if the text has no colon or anything but a number stood before it.
std::optional<std::uint64_t> takeNumber(std::string_view& text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    const std::string_view taken = text.substr(0, colon);
    text.remove_prefix(colon + 1);
    return Decimal::parseUnsigned<std::uint64_t>(taken);
}

std::optional<Line> parse(std::string_view line) {
    const auto device = takeNumber(line);
    const auto inode = takeNumber(line);
    auto path = clean(line);
    if (!device || !inode || path != line)
        return std::nullopt;
    return Line{.identity = {.device = *device, .inode = *inode}, .path = *std::move(path)};
}

} // namespace

std::optional<std::string> clean(std::optional<std::string_view> path) {
    if (!path || !path->starts_with('/') || std::ranges::any_of(*path, Ascii::isControl)
        || !Text::isValidUtf8(*path) || Text::hasMoreCharactersThan(*path, maxPath)
        || PathText::goesUp(*path))
        return std::nullopt;
    const auto trimmed = PathText::withoutTrailingSlashes(*path);
    return std::string(trimmed.empty() ? "/" : trimmed);
}

Selection selection(std::optional<std::string_view> folder, std::span<const std::string> items) {
    Selection result{.folder = clean(folder), .items = {}};
    for (const std::string& item : items) {
        if (result.items.size() == maxItems)
            break;
        auto path = clean(item);
        if (path && std::ranges::find(result.items, *path) == result.items.end())
            result.items.push_back(*std::move(path));
    }
    return result;
}

Check identityPaths(std::span<const std::string> lines, const Lstat& lstat) {
    if (lines.empty() || lines.size() > maxItems)
        return Bad{};
    Ok ok;
    for (const std::string& text : lines) {
        auto line = parse(text);
        if (!line)
            return Bad{};
        if (lstat(line->path) != line->identity)
            return Changed{};
        ok.paths.push_back(std::move(line->path));
    }
    return ok;
}

} // namespace velmo::FinderSelectionParse
