#pragma once

#include "core/apps/NameComparison.h"

namespace velmo {

/// Returns the order of names in the user's language, without regard to case. CoreFoundation orders
/// them on a Mac (platform/host/macos), ICU elsewhere (platform/host/linux).
NameComparison localisedComparison(DigitOrder digits);

} // namespace velmo
