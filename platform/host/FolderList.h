#pragma once

#include "core/apps/Inventory.h"

#include <string>
#include <vector>

namespace velmo::Inventory {

/// What lies in the folder, in the disk's order and with its names byte by byte, without "." and
/// "..". Nothing when it can't be listed; what came before an error midway.
std::vector<Entry> listFolder(const std::string& path);

} // namespace velmo::Inventory
