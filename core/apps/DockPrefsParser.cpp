#include "core/apps/DockPrefsParser.h"

#include "core/support/FileUrl.h"
#include "core/support/PathText.h"
#include "core/support/Text.h"

#include <algorithm>
#include <utility>

namespace velmo::DockPrefsParser {

namespace {

constexpr std::size_t maxText = 1024; ///< user-perceived characters

constexpr std::string_view fileTile = "file-tile";
constexpr std::string_view directoryTile = "directory-tile";

/// Returns the text without white space around it, or "" if the value is not a text or is too long.
std::string text(const Value& value) {
    const std::string_view kept = Text::trimmed(value.text().value_or(""), Text::isBlankOrNewline);
    return Text::hasMoreCharactersThan(kept, maxText) ? std::string() : std::string(kept);
}

struct Tile {
    std::string type;
    std::string bundleId;
    std::string path;
    std::string label;
};

/// Returns the tiles, of any type, among the first `maxTiles` entries; other entries are left out.
std::vector<Tile> tiles(const Value& value) {
    std::vector<Tile> result;
    const auto entries = value.elements();
    for (const Value& entry : entries.first(std::min(entries.size(), maxTiles))) {
        const Value& data = entry["tile-data"];
        if (data.dictionary() == nullptr)
            continue;
        result.push_back({.type = text(entry["tile-type"]),
                          .bundleId = text(data["bundle-identifier"]),
                          .path = path(text(data["file-data"]["_CFURLString"])),
                          .label = text(data["file-label"])});
    }
    return result;
}

bool endsInApp(std::string_view path) {
    return Text::lowercased(path).ends_with(".app");
}

} // namespace

DockPrefs parse(const Value::Dictionary& prefs, std::string_view downloads) {
    const auto pref = [&](std::string_view name) -> const Value& {
        return Value::member(&prefs, name);
    };
    DockPrefs result{.apps = apps(pref("persistent-apps")),
                     .recents = {},
                     .others = others(pref("persistent-others"), downloads),
                     .modCount = pref("mod-count").number().value_or(0),
                     .trashFull = pref("trash-full").truth(),
                     .showRecents = pref("show-recents").truth()};
    if (result.showRecents != false)
        result.recents = apps(pref("recent-apps"));
    return result;
}

std::vector<DockTile> apps(const Value& value) {
    std::vector<DockTile> result;
    for (Tile& tile : tiles(value)) {
        if ((tile.type.empty() || tile.type == fileTile)
            && (!tile.bundleId.empty() || endsInApp(tile.path)))
            result.push_back({.bundleId = std::move(tile.bundleId),
                              .path = std::move(tile.path),
                              .label = std::move(tile.label)});
    }
    return result;
}

std::vector<DockFolder> others(const Value& value, std::string_view downloads) {
    downloads = PathText::withoutTrailingSlash(downloads);
    std::vector<DockFolder> result;
    for (Tile& tile : tiles(value)) {
        if (tile.type != directoryTile || tile.path.empty())
            continue;
        const bool isDownloads = tile.path == downloads;
        result.push_back({.path = std::move(tile.path),
                          .label = std::move(tile.label),
                          .role = isDownloads ? "downloads" : "folder"});
    }
    return result;
}

std::string path(std::string_view fromURLString) {
    if (const auto url = FileUrl::parse(fromURLString))
        return url->path == "/" ? "/" : std::string(PathText::withoutTrailingSlash(url->path));
    return std::string(fromURLString.starts_with('/') ? fromURLString : "");
}

} // namespace velmo::DockPrefsParser
