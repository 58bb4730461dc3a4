#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmo {

/// An application in the Dock. What stands in a tile comes from preferences that any program may
/// write: to be shown, not to be trusted.
struct DockTile {
    std::string bundleId; ///< empty where the tile names none
    std::string path;     ///< empty where it is unknown
    std::string label;

    static constexpr auto fields =
        std::tuple{field("bundleId", &DockTile::bundleId), field("path", &DockTile::path),
                   field("label", &DockTile::label)};
    bool operator==(const DockTile&) const = default;
};

/// A folder at the far end of the Dock.
struct DockFolder {
    std::string path;
    std::string label;
    std::string role; ///< "downloads" or "folder"

    static constexpr auto fields =
        std::tuple{field("path", &DockFolder::path), field("label", &DockFolder::label),
                   field("role", &DockFolder::role)};
    bool operator==(const DockFolder&) const = default;
};

struct DockPrefs {
    std::vector<DockTile> apps;    ///< pinned, in their order
    std::vector<DockTile> recents; ///< empty when they are not shown
    std::vector<DockFolder> others;
    std::int64_t modCount = 0;       ///< counts the Dock's changes; 0 when unknown
    std::optional<bool> trashFull;   ///< absent: unknown
    std::optional<bool> showRecents; ///< absent: unknown, which counts as shown

    static constexpr auto fields = std::tuple{
        field("apps", &DockPrefs::apps),           field("recents", &DockPrefs::recents),
        field("others", &DockPrefs::others),       field("modCount", &DockPrefs::modCount),
        field("trashFull", &DockPrefs::trashFull), field("showRecents", &DockPrefs::showRecents)};
    bool operator==(const DockPrefs&) const = default;
};

} // namespace velmo
