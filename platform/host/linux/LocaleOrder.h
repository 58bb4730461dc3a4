#pragma once

#include "core/apps/NameComparison.h"

#include <string>

namespace velmo {

/// The order of names in a locale such as "sv_SE", by ICU's collator. Accents count, letter case
/// and width do not. In "en_US_POSIX", which is what an unset locale is called, case would count:
/// it is ordered by the root locale instead. Throws std::runtime_error where ICU has no data.
NameComparison localeComparison(const std::string& locale, DigitOrder digits);

} // namespace velmo
