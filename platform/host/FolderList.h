#pragma once

#include "core/apps/Inventory.h"

#include <string>
#include <vector>

namespace velmo::Inventory {

/// Returns what lies in the folder, in the order of the disk and with its names byte by byte,
/// without "." and "..". Returns nothing if the folder can't be listed, and what came before the
/// error if one occurs midway.
std::vector<Entry> listFolder(const std::string& path);

} // namespace velmo::Inventory
