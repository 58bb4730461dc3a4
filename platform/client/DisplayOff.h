#pragma once

#include <string>

namespace velmo {

/// Runs "pmset displaysleepnow", which needs no root, and does not wait for it.
void turnDisplayOffBy(const std::string& pmset);

} // namespace velmo
