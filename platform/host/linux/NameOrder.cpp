#include "platform/host/NameOrder.h"

#include "platform/host/linux/LocaleOrder.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/stringpiece.h>

#include <memory>
#include <stdexcept>

namespace velmo {

namespace {

constexpr std::string_view unsetLocale = "en_US_POSIX";

} // namespace

NameComparison localeComparison(const std::string& locale, DigitOrder digits) {
    UErrorCode error = U_ZERO_ERROR;
    const auto named = locale == unsetLocale ? icu::Locale::getRoot()
                                             : icu::Locale::createFromName(locale.c_str());
    const std::shared_ptr<icu::Collator> collator(icu::Collator::createInstance(named, error));
    if (U_SUCCESS(error) != 0) {
        collator->setStrength(icu::Collator::SECONDARY);
        collator->setAttribute(UCOL_NUMERIC_COLLATION,
                               digits == DigitOrder::byValue ? UCOL_ON : UCOL_OFF, error);
    }
    if (U_FAILURE(error) != 0)
        throw std::runtime_error("no data to order names by");
    // Ill-formed UTF-8 compares as U+FFFD.
    return [collator](std::string_view a, std::string_view b) {
        UErrorCode ignored = U_ZERO_ERROR;
        return static_cast<int>(collator->compareUTF8(a, b, ignored)) <=> 0;
    };
}

NameComparison localisedComparison(DigitOrder digits) {
    return localeComparison(icu::Locale::getDefault().getName(), digits);
}

} // namespace velmo
