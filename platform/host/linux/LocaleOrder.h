#pragma once

#include "core/apps/NameComparison.h"

#include <string>

namespace velmo {

/// Returns the order of names in a locale such as "sv_SE", by ICU's collator. Accents count, letter
/// case and width do not. Case would count in "en_US_POSIX", the name of an unset locale, so that
/// name gets the root locale's order. Throws std::runtime_error if ICU has no data.
NameComparison localeComparison(const std::string& locale, DigitOrder digits);

} // namespace velmo
