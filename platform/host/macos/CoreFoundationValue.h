#pragma once

#include "core/support/Value.h"

#include <CoreFoundation/CoreFoundation.h>

#include <optional>

namespace velmo {

/// Returns a whole property list as a value. Dates, and texts that `textIn` can't read, become
/// values without a kind; a member with such a text as its key is left out. Absent for null, and
/// for a list that is deeper than `PropertyListBounds::maxDepth`.
std::optional<Value> valueIn(CFTypeRef object);

} // namespace velmo
