#include "platform/host/NameOrder.h"

#include "platform/host/linux/LocaleOrder.h"

#include <gtest/gtest.h>

namespace velmo {
namespace {

TEST(NameOrder, IsThatOfTheLocaleWithoutRegardToCase) {
    using enum DigitOrder;

    const struct {
        const char* locale;
        DigitOrder digits;
        std::vector<std::string_view> ascending;
    } cases[] = {
        {"en_GB", byValue, {"a9", "A10", "a99999999999999999999", "a100000000000000000000"}},
        {"en_GB", byCharacter, {"a10", "A9", "B", "c", "e", "\u00E9", "f", "z"}},
        {"en_US_POSIX", byCharacter, {"a", "B", "c"}},
        {"sv_SE", byCharacter, {"z", "\u00E4"}},
        {"", byCharacter, {"", "\xFF"}},
    };

    for (const auto& [locale, digits, names] : cases) {
        const auto compare = localeComparison(locale, digits);
        for (std::size_t a = 0; a < names.size(); ++a) {
            for (std::size_t b = 0; b < names.size(); ++b)
                EXPECT_TRUE(compare(names[a], names[b]) == a <=> b)
                    << locale << ": " << names[a] << ", " << names[b];
        }
        EXPECT_TRUE(compare("safari \u00E9", "Safari E\u0301") == 0) << locale;
    }
    EXPECT_TRUE(localeComparison("en_GB", byValue)("a007", "A7") == 0);
    EXPECT_TRUE(localisedComparison(byValue)("Speaker 9", "speaker 10") < 0);
}

} // namespace
} // namespace velmo
