#pragma once

#include "core/apps/DockPrefs.h"
#include "core/support/Value.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Reads the Dock's preferences (the domain "com.apple.dock") in the form in which the Dock keeps
/// them. Any value is accepted. Where a text is expected, any other value, or a text of more than
/// 1024 user-perceived characters, is read as ""; where a number is expected, any other value is
/// read as 0. A tile that can't be read is left out.
namespace velmo::DockPrefsParser {

/// How many entries of one list are looked at, including those that are left out.
inline constexpr std::size_t maxTiles = 200;

/// Reads everything that the Dock contains. `downloads` is the path of the user's Downloads folder,
/// with or without one trailing slash.
DockPrefs parse(const Value::Dictionary& prefs, std::string_view downloads);

/// Returns the applications in a list of tiles; empty for any other value. A tile counts if its
/// type is "file-tile" or missing and it has a bundle identifier or, failing that, a path that ends
/// in ".app" in any letter case.
std::vector<DockTile> apps(const Value& value);

/// Returns the folders in a list of tiles; empty for any other value. A tile counts if its type is
/// "directory-tile" and it has a path.
std::vector<DockFolder> others(const Value& value, std::string_view downloads);

/// Returns the path of a "file://" address (see `FileUrl::parse`) without its one trailing slash;
/// an absolute path unchanged; "" for any other text.
std::string path(std::string_view fromURLString);

} // namespace velmo::DockPrefsParser
