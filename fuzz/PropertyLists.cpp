#include "core/apps/DockPrefsParser.h"
#include "core/input/SymbolicHotKeys.h"
#include "core/support/Text.h"
#include "core/windows/CGWindowRow.h"
#include "fuzz/Fuzz.h"
#include "platform/host/PropertyList.h"
#include "platform/host/PropertyListBounds.h"

#include <algorithm>
#include <cmath>

namespace velmo::Fuzz {

namespace {

struct Extent {
    std::size_t nodes = 1;
    std::size_t bytes = 0;
    std::size_t depth = 0;
};

void add(Extent& whole, const Extent& part) {
    whole.nodes += part.nodes;
    whole.bytes += part.bytes;
    whole.depth = std::max(whole.depth, 1 + part.depth);
}

// NOLINTNEXTLINE(misc-no-recursion): the depth is what is measured.
Extent extentOf(const Value& value) {
    Extent extent;
    extent.bytes = value.text().value_or("").size() + value.data().value_or(ByteView()).size();
    for (const Value& element : value.elements())
        add(extent, extentOf(element));
    if (value.dictionary() != nullptr) {
        for (const auto& [name, member] : *value.dictionary()) {
            add(extent, Extent{.bytes = name.size()});
            add(extent, extentOf(member));
        }
    }
    return extent;
}

void requireTile(const DockTile& tile) {
    require(tile.path.empty() || tile.path.starts_with('/'));
    require(!tile.bundleId.empty() || !tile.path.empty());
    require(!Text::hasMoreCharactersThan(tile.label, 1024));
}

void requireDock(const Value::Dictionary& preferences) {
    const DockPrefs dock = DockPrefsParser::parse(preferences, "/Users/me/Downloads");
    std::ranges::for_each(dock.apps, requireTile);
    std::ranges::for_each(dock.recents, requireTile);
    for (const DockFolder& folder : dock.others)
        require(folder.path.starts_with('/')
                && (folder.role == "folder" || folder.role == "downloads"));
    require(std::max({dock.apps.size(), dock.recents.size(), dock.others.size()})
            <= DockPrefsParser::maxTiles);
    require(encodeJson(dock).has_value());
}

void requireHotKeys(const Value::Dictionary& preferences) {
    for (const int number : {32, 33, 36, 64, 70, 79, 81, 160, 163}) {
        const auto hotKey = SymbolicHotKeys::resolve(number, &preferences);
        require(!hotKey || (hotKey->keyCode <= 127 && (hotKey->flags & ~0xBE0000ULL) == 0));
    }
}

void requireRow(const Value& entry) {
    const auto row = CGWindowRow::parse(entry);
    if (!row)
        return;
    require(row->id >= 1 && row->pid >= 1 && row->title != "");
    for (const double side : {row->bounds.x, row->bounds.y, row->bounds.width, row->bounds.height})
        require(std::isfinite(side));
}

/// The results of every reader of property lists keep within their limits, whatever the list
/// contains.
void checkPropertyLists(Input input) {
    const std::string_view bytes = input.rest();
    const auto list = PropertyList::parse(bytes);
    require(!list || PropertyListBounds::admits(bytes));
    if (!list)
        return;
    const Extent extent = extentOf(*list);
    require(extent.depth <= PropertyListBounds::maxDepth);
    require(extent.nodes <= PropertyListBounds::maxNodes);
    require(extent.bytes <= PropertyListBounds::maxUnfoldedBytes);
    requireRow(*list);
    if (const auto* dictionary = list->dictionary()) {
        requireDock(*dictionary);
        requireHotKeys(*dictionary);
    }
}

const Target propertyListsTarget("PropertyLists", checkPropertyLists);

} // namespace

} // namespace velmo::Fuzz
