#include "platform/host/NameOrder.h"

#include "platform/macos/CoreFoundation.h"

namespace velmo {

NameComparison localisedComparison(DigitOrder digits) {
    CFStringCompareFlags options = kCFCompareCaseInsensitive;
    options |= kCFCompareLocalized;
    if (digits == DigitOrder::byValue)
        options |= kCFCompareNumerically;
    return [options](std::string_view a, std::string_view b) {
        return CFStringCompare(stringOf(a).get(), stringOf(b).get(), options) <=> kCFCompareEqualTo;
    };
}

} // namespace velmo
