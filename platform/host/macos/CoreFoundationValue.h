#pragma once

#include "core/support/Value.h"

#include <CoreFoundation/CoreFoundation.h>

#include <optional>

namespace velmo {

/// The whole of a property list: dates, and texts that `textIn` does not give, as values without a
/// kind, members under such a text left out. Absent for null, and beyond
/// `PropertyListBounds::maxDepth`.
std::optional<Value> valueIn(CFTypeRef object);

} // namespace velmo
