#include "platform/host/macos/CoreFoundationValue.h"

#include "platform/host/PropertyListBounds.h"
#include "platform/macos/CoreFoundation.h"

#include <cstddef>
#include <vector>

namespace velmo {

namespace {

/// An integer beyond 64 bits becomes the real that is nearest to it.
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

std::optional<Value> valueIn(CFTypeRef object) {
    return valueAt(object, 0);
}

} // namespace velmo
