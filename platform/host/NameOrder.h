#pragma once

#include "core/apps/NameComparison.h"

namespace velmo {

/// The order of names in the user's language: CoreFoundation's on a Mac (platform/macos), ICU's
/// elsewhere (platform/portable).
NameComparison localisedComparison(DigitOrder digits);

} // namespace velmo
