#include "platform/macos/CoreFoundationValue.h"

#include "core/support/PropertyListBounds.h"
#include "core/support/Text.h"

#include <cstddef>
#include <vector>

namespace velmo {

namespace {

bool isOfType(CFTypeRef object, CFTypeID type) {
    return object != nullptr && CFGetTypeID(object) == type;
}

/// An integer that 64 bits can't hold as the real that is nearest.
Value numberValue(CFNumberRef number) {
    const auto integer = CFNumberIsFloatType(number) == 0 ? integerIn(number) : std::nullopt;
    if (integer)
        return *integer;
    double real = 0;
    CFNumberGetValue(number, kCFNumberDoubleType, &real);
    return real;
}

Value dataValue(CFDataRef data) {
    const UInt8* const bytes = CFDataGetBytePtr(data);
    return Bytes(bytes, bytes + CFDataGetLength(data));
}

std::optional<Value> valueAt(CFTypeRef object, std::size_t depth);

// Recursion is bounded by the depth. NOLINTBEGIN(misc-no-recursion)

std::optional<Value> arrayValue(CFArrayRef array, std::size_t depth) {
    Value::Array values;
    for (CFIndex index = 0; index < CFArrayGetCount(array); ++index) {
        auto value = valueAt(CFArrayGetValueAtIndex(array, index), depth + 1);
        if (!value)
            return std::nullopt;
        values.push_back(*std::move(value));
    }
    return values;
}

std::optional<Value> dictionaryValue(CFDictionaryRef dictionary, std::size_t depth) {
    const auto count = static_cast<std::size_t>(CFDictionaryGetCount(dictionary));
    std::vector<const void*> keys(count);
    std::vector<const void*> objects(count);
    CFDictionaryGetKeysAndValues(dictionary, keys.data(), objects.data());
    Value::Dictionary values;
    for (std::size_t i = 0; i < count; ++i) {
        auto value = valueAt(objects[i], depth + 1);
        if (!value)
            return std::nullopt;
        if (auto key = textIn(keys[i]))
            values.insert_or_assign(*std::move(key), *std::move(value));
    }
    return values;
}

std::optional<Value> valueAt(CFTypeRef object, std::size_t depth) {
    if (object == nullptr || depth > PropertyListBounds::maxDepth)
        return std::nullopt;
    if (const auto boolean = booleanIn(object))
        return *boolean;
    if (auto text = textIn(object))
        return *std::move(text);
    if (isOfType(object, CFNumberGetTypeID()))
        return numberValue(static_cast<CFNumberRef>(object));
    if (isOfType(object, CFDataGetTypeID()))
        return dataValue(static_cast<CFDataRef>(object));
    if (isOfType(object, CFArrayGetTypeID()))
        return arrayValue(static_cast<CFArrayRef>(object), depth);
    if (isOfType(object, CFDictionaryGetTypeID()))
        return dictionaryValue(static_cast<CFDictionaryRef>(object), depth);
    return Value();
}

// NOLINTEND(misc-no-recursion)

} // namespace

std::optional<bool> booleanIn(CFTypeRef object) {
    if (!isOfType(object, CFBooleanGetTypeID()))
        return std::nullopt;
    return CFBooleanGetValue(static_cast<CFBooleanRef>(object)) != 0;
}

std::optional<std::int64_t> integerIn(CFTypeRef object) {
    if (!isOfType(object, CFNumberGetTypeID()))
        return std::nullopt;
    std::int64_t value = 0;
    // False when the number does not fit without loss.
    if (CFNumberGetValue(static_cast<CFNumberRef>(object), kCFNumberSInt64Type, &value) == 0)
        return std::nullopt;
    return value;
}

std::optional<std::string> textIn(CFTypeRef object) {
    if (!isOfType(object, CFStringGetTypeID()))
        return std::nullopt;
    const auto* const text = static_cast<CFStringRef>(object);
    const CFIndex length = CFStringGetLength(text);
    const CFIndex longest = CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8);
    std::string bytes(static_cast<std::size_t>(longest), '\0');
    // With no byte to stand for what can't be converted, the conversion stops there. Not the C
    // string: that would end at a NUL, and what follows it would go unseen.
    CFIndex used = 0;
    const CFIndex converted =
        CFStringGetBytes(text, CFRangeMake(0, length), kCFStringEncodingUTF8, UInt8{}, Boolean{},
                         reinterpret_cast<UInt8*>(bytes.data()), longest, &used);
    if (converted != length)
        return std::nullopt;
    bytes.resize(static_cast<std::size_t>(used));
    return bytes;
}

std::optional<Value> valueIn(CFTypeRef object) {
    return valueAt(object, 0);
}

Owned<CFStringRef> stringOf(std::string_view text) {
    const std::string valid = Text::repaired(text);
    return Owned(CFStringCreateWithBytes(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(valid.data()),
        static_cast<CFIndex>(valid.size()), kCFStringEncodingUTF8, Boolean{}));
}

} // namespace velmo
