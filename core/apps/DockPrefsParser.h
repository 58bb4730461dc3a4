#pragma once

#include "core/apps/DockPrefs.h"
#include "core/support/Value.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The Dock's preferences as the Dock itself keeps them. Nothing fails: a text of another kind or
/// of more than 1024 characters reads as "", a number of another kind as 0, an entry that can't be
/// read is skipped.
namespace velmo::DockPrefsParser {

/// Entries that are examined in any one list, skipped ones counted.
inline constexpr std::size_t maxTiles = 200;

/// `downloads` is the path of the user's Downloads folder, perhaps with one slash behind it.
DockPrefs parse(const Value::Dictionary& prefs, std::string_view downloads);

/// The tiles of type "file-tile", or of none, that have a bundle identifier or a path that ends in
/// ".app" in whatever case. None of null.
std::vector<DockTile> apps(const Value* value);

/// The tiles of type "directory-tile" that have a path. None of null.
std::vector<DockFolder> others(const Value* value, std::string_view downloads);

/// The path that a "file://" address (see `FileUrl::parse`) leads to, without one slash behind it;
/// an absolute path as it is; "" for anything else.
std::string path(std::string_view fromURLString);

} // namespace velmo::DockPrefsParser
