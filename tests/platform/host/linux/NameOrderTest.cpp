#include "platform/host/NameOrder.h"

#include "platform/host/linux/LocaleOrder.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace velmo {
namespace {

TEST(NameOrder, IsThatOfTheLocaleWithoutRegardToCase) {
    using enum DigitOrder;
    const auto less = std::weak_ordering::less;
    const auto same = std::weak_ordering::equivalent;
    const std::tuple<std::string, DigitOrder, std::string_view, std::string_view,
                     std::weak_ordering>
        cases[] = {
            {"en_GB", byValue, "Speaker 9", "Speaker 10", less},
            {"en_GB", byCharacter, "Speaker 10", "Speaker 9", less},
            {"en_GB", byValue, "a007", "A7", same},
            {"en_GB", byValue, "a99999999999999999999", "a100000000000000000000", less},
            {"en_GB", byCharacter, "safari", "Safari", same},
            {"en_GB", byCharacter, "a", "B", less},
            {"en_GB", byCharacter, "B", "c", less},
            {"en_GB", byCharacter, "e", "\u00E9", less},
            {"en_GB", byCharacter, "\u00E9", "f", less},
            {"en_GB", byCharacter, "\u00E9", "E\u0301", same},
            {"en_US_POSIX", byCharacter, "safari", "Safari", same},
            {"en_US_POSIX", byCharacter, "a", "B", less},
            {"de_DE", byCharacter, "\u00E4", "z", less},
            {"sv_SE", byCharacter, "z", "\u00E4", less},
            {"", byCharacter, "", "\xFF", less},
        };
    for (const auto& [locale, digits, a, b, order] : cases) {
        const auto compare = localeComparison(locale, digits);
        EXPECT_TRUE(compare(a, b) == order) << locale << ": " << a << ", " << b;
        EXPECT_TRUE(compare(b, a) == 0 <=> order) << locale << ": " << a << ", " << b;
    }
    EXPECT_TRUE(localisedComparison(DigitOrder::byValue)("Speaker 9", "speaker 10") < 0);
}

RC_GTEST_PROP(NameOrder, SortsAnyBytes, (std::string a, std::string b, std::string c)) {
    for (const DigitOrder digits : {DigitOrder::byValue, DigitOrder::byCharacter}) {
        const auto compare = localeComparison("en_GB", digits);
        RC_ASSERT(compare(a, b) == 0 <=> compare(b, a));
        RC_ASSERT(!(compare(a, b) <= 0 && compare(b, c) <= 0) || compare(a, c) <= 0);
    }
}

} // namespace
} // namespace velmo
