#include "core/apps/DockPrefsParser.h"

#include "core/support/FileUrl.h"
#include "core/support/Text.h"

#include <algorithm>
#include <optional>
#include <span>

namespace velmo::DockPrefsParser {

namespace {

constexpr std::size_t longestText = 1024; // characters

constexpr std::string_view fileTile = "file-tile";
constexpr std::string_view directoryTile = "directory-tile";

const Value* memberOf(const Value* value, std::string_view name) {
    return value == nullptr ? nullptr : value->member(name);
}

std::string text(const Value* value) {
    const auto found = value == nullptr ? std::nullopt : value->text();
    const std::string_view kept = Text::trimmed(found.value_or(""), Text::isBlankOrNewline);
    return Text::hasMoreCharactersThan(kept, longestText) ? std::string() : std::string(kept);
}

std::optional<bool> truth(const Value* value) {
    return value == nullptr ? std::nullopt : value->truth();
}

struct Tile {
    std::string type;
    const Value* data;
    std::string path;
    std::string label;
};

/// The first `maxTiles` entries, without those that are no tile.
std::vector<Tile> tiles(const Value* value) {
    const Value::Array* array = value == nullptr ? nullptr : value->array();
    std::vector<Tile> result;
    if (array == nullptr)
        return result;
    for (const Value& entry : std::span(*array).first(std::min(array->size(), maxTiles))) {
        const Value* data = entry.member("tile-data");
        if (data == nullptr || data->dictionary() == nullptr)
            continue;
        result.push_back({.type = text(entry.member("tile-type")),
                          .data = data,
                          .path = path(text(memberOf(data->member("file-data"), "_CFURLString"))),
                          .label = text(data->member("file-label"))});
    }
    return result;
}

bool endsInApp(std::string_view path) {
    return Text::lowercased(path).ends_with(".app");
}

} // namespace

DockPrefs parse(const Value::Dictionary& prefs, std::string_view downloads) {
    DockPrefs result{.apps = apps(member(&prefs, "persistent-apps")),
                     .recents = {},
                     .others = others(member(&prefs, "persistent-others"), downloads),
                     .trashFull = truth(member(&prefs, "trash-full")),
                     .showRecents = truth(member(&prefs, "show-recents"))};
    if (result.showRecents != false)
        result.recents = apps(member(&prefs, "recent-apps"));
    if (const Value* count = member(&prefs, "mod-count"))
        result.modCount = count->number().value_or(0);
    return result;
}

std::vector<DockTile> apps(const Value* value) {
    std::vector<DockTile> result;
    for (Tile& tile : tiles(value)) {
        std::string bundleId = text(tile.data->member("bundle-identifier"));
        if ((tile.type.empty() || tile.type == fileTile)
            && (!bundleId.empty() || endsInApp(tile.path)))
            result.push_back({.bundleId = std::move(bundleId),
                              .path = std::move(tile.path),
                              .label = std::move(tile.label)});
    }
    return result;
}

std::vector<DockFolder> others(const Value* value, std::string_view downloads) {
    if (downloads.ends_with('/'))
        downloads.remove_suffix(1);
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
    if (const auto url = FileUrl::parse(fromURLString)) {
        std::string found = url->path;
        if (found.size() >= 2 && found.ends_with('/'))
            found.pop_back();
        return found;
    }
    return fromURLString.starts_with('/') ? std::string(fromURLString) : std::string();
}

} // namespace velmo::DockPrefsParser
