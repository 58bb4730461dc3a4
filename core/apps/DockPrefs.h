#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmo {

/// An application in the Dock. The texts come from preferences that any program may write: show
/// them, but don't rely on them.
struct DockTile {
    std::string bundleId; ///< empty if the tile has none
    std::string path;     ///< empty if it is unknown
    std::string label;    ///< the name that the Dock shows

    static constexpr auto fields =
        std::tuple{field("bundleId", &DockTile::bundleId), field("path", &DockTile::path),
                   field("label", &DockTile::label)};
    bool operator==(const DockTile&) const = default;
};

/// A folder in the Dock, beside the Trash.
struct DockFolder {
    std::string path;
    std::string label;
    std::string role; ///< "downloads" or "folder"

    static constexpr auto fields =
        std::tuple{field("path", &DockFolder::path), field("label", &DockFolder::label),
                   field("role", &DockFolder::role)};
    bool operator==(const DockFolder&) const = default;
};

/// What is in the Dock.
struct DockPrefs {
    std::vector<DockTile> apps; ///< the pinned applications, in the Dock's order
    std::vector<DockTile>
        recents; ///< recently used applications; empty if the Dock does not show them
    std::vector<DockFolder> others;  ///< the folders, in the Dock's order
    std::int64_t modCount = 0;       ///< grows with every change of the Dock; 0 if unknown
    std::optional<bool> trashFull;   ///< absent if unknown
    std::optional<bool> showRecents; ///< absent if unknown: the Dock then shows them

    static constexpr auto fields = std::tuple{
        field("apps", &DockPrefs::apps),           field("recents", &DockPrefs::recents),
        field("others", &DockPrefs::others),       field("modCount", &DockPrefs::modCount),
        field("trashFull", &DockPrefs::trashFull), field("showRecents", &DockPrefs::showRecents)};
    bool operator==(const DockPrefs&) const = default;
};

} // namespace velmo
