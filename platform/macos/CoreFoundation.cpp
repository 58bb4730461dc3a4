#include "platform/macos/CoreFoundation.h"

#include "core/support/Text.h"

#include <cstddef>

namespace velmo {

bool isOfType(CFTypeRef object, CFTypeID type) {
    return object != nullptr && CFGetTypeID(object) == type;
}

std::optional<bool> booleanIn(CFTypeRef object) {
    if (!isOfType(object, CFBooleanGetTypeID()))
        return std::nullopt;
    return CFBooleanGetValue(static_cast<CFBooleanRef>(object)) != 0;
}

std::optional<std::int64_t> integerIn(CFTypeRef object) {
    if (!isOfType(object, CFNumberGetTypeID()))
        return std::nullopt;
    std::int64_t value = 0;
    // The call fails if the number does not fit without loss.
    if (CFNumberGetValue(static_cast<CFNumberRef>(object), kCFNumberSInt64Type, &value) == 0)
        return std::nullopt;
    return value;
}

std::optional<std::string> textIn(CFTypeRef object) {
    if (!isOfType(object, CFStringGetTypeID()))
        return std::nullopt;
    const auto* const text = static_cast<CFStringRef>(object);
    const CFIndex length = CFStringGetLength(text);
    const CFIndex maxSize = CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8);
    std::string bytes(static_cast<std::size_t>(maxSize), '\0');
    // Without a byte to stand for it, the conversion stops at the first character that can't be
    // converted. A C string would end at a NUL, and what follows would go unseen.
    CFIndex used = 0;
    const CFIndex converted =
        CFStringGetBytes(text, CFRangeMake(0, length), kCFStringEncodingUTF8, UInt8{}, Boolean{},
                         reinterpret_cast<UInt8*>(bytes.data()), maxSize, &used);
    if (converted != length)
        return std::nullopt;
    bytes.resize(static_cast<std::size_t>(used));
    return bytes;
}

Owned<CFStringRef> stringOf(std::string_view text) {
    const std::string valid = Text::repaired(text);
    return Owned(CFStringCreateWithBytes(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(valid.data()),
        static_cast<CFIndex>(valid.size()), kCFStringEncodingUTF8, Boolean{}));
}

} // namespace velmo
