#include "platform/host/NameOrder.h"

#include "platform/host/linux/LocaleOrder.h"

#include <gtest/gtest.h>

namespace velmo {
namespace {

TEST(NameOrder, IsThatOfTheLocaleWithoutRegardToCase) {
    using enum DigitOrder;
    const auto less = std::weak_ordering::less;
    const auto same = std::weak_ordering::equivalent;

    const struct {
        const char* locale;
        DigitOrder digits;
        std::string_view a;
        std::string_view b;
        std::weak_ordering order;
    } cases[] = {
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

} // namespace
} // namespace velmo
