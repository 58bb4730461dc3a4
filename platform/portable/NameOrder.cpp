#include "platform/posix/NameOrder.h"

#include "platform/portable/LocaleOrder.h"

#include <unicode/ucol.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>

namespace velmo {

namespace {

constexpr std::string_view unsetLocale = "en_US_POSIX";
constexpr const char* rootLocale = "";

std::weak_ordering orderOf(UCollationResult result) {
    return static_cast<int>(result) <=> 0;
}

} // namespace

NameComparison localeComparison(const std::string& locale, DigitOrder digits) {
    UErrorCode error = U_ZERO_ERROR;
    const char* name = locale == unsetLocale ? rootLocale : locale.c_str();
    const std::shared_ptr<UCollator> collator(ucol_open(name, &error), &ucol_close);
    if (U_SUCCESS(error)) {
        ucol_setStrength(collator.get(), UCOL_SECONDARY);
        ucol_setAttribute(collator.get(), UCOL_NUMERIC_COLLATION,
                          digits == DigitOrder::byValue ? UCOL_ON : UCOL_OFF, &error);
    }
    if (U_FAILURE(error))
        throw std::runtime_error("no data to order names by");
    // Ill-formed UTF-8 compares as U+FFFD; names longer than the parameter's type compare as far
    // as it goes.
    return [collator](std::string_view a, std::string_view b) {
        UErrorCode ignored = U_ZERO_ERROR;
        const auto length = [](std::string_view text) {
            return static_cast<std::int32_t>(std::min<std::size_t>(text.size(), INT32_MAX));
        };
        return orderOf(
            ucol_strcollUTF8(collator.get(), a.data(), length(a), b.data(), length(b), &ignored));
    };
}

NameComparison localisedComparison(DigitOrder digits) {
    return localeComparison(uloc_getDefault(), digits);
}

} // namespace velmo
