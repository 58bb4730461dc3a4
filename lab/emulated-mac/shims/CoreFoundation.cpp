/// CFBase.h, CFString.h, CFNumber.h, CFArray.h, CFDictionary.h; the open CF has the rest.

#include "lab/emulated-mac/shims/CoreFoundation.h"

#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Foundation.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <array>
#include <cstring>
#include <utility>

namespace velmo {

CFArray::~CFArray() {
    for (Object* const value : values)
        release(value);
}

CFDictionary::~CFDictionary() {
    for (const auto& [key, value] : values)
        release(value);
}

CFDictionary& CFDictionary::with(const std::string& key, Object* value) {
    values[key] = value;
    return *this;
}

namespace {

struct CFBoolean : Object {
    bool value = false;
};

FrameworkClass booleanClass("__NSCFBoolean", &nsObject.object, sizeof(CFBoolean), {});
FrameworkClass numberClass("__NSCFNumber", &nsObject.object, sizeof(CFNumber), {});
FrameworkClass arrayClass("__NSCFArray", &nsObject.object, sizeof(CFArray),
                          {constructing<CFArray>(), destructing<CFArray>()});
FrameworkClass dictionaryClass("__NSCFDictionary", &nsObject.object, sizeof(CFDictionary),
                               {constructing<CFDictionary>(), destructing<CFDictionary>()});

enum TypeId : std::uint64_t { string = 7, array = 19, boolean = 21, number = 22, dictionary = 18 };

std::uint64_t typeOf(const Object* object) {
    if (isString(object))
        return string;
    const std::array<std::pair<const FrameworkClass*, TypeId>, 4> rows = {{
        {&booleanClass, boolean},
        {&numberClass, number},
        {&arrayClass, array},
        {&dictionaryClass, dictionary},
    }};
    for (const auto& [isa, type] : rows) {
        if (object->isa == &isa->object)
            return type;
    }
    endRun("CFGetTypeID of a " + nameOf(object));
}

template<TypeId Type>
std::uint64_t theType() {
    return Type;
}

/// CFRelease of null crashes; `release` would accept it.
void releaseReference(Object* object) {
    if (object == nullptr)
        misuse("CFRelease of null");
    release(object);
}

std::uint32_t booleanValue(const CFBoolean* object) {
    return object->value ? 1 : 0;
}

constexpr std::int64_t sInt64Type = 4; // kCFNumberSInt64Type

std::uint32_t numberValue(const CFNumber* object, std::int64_t type, std::int64_t* to) {
    if (type != sInt64Type)
        endRun("a number is wanted in another form than 64 bits");
    *to = object->value;
    return 1;
}

/// Returns the length in UTF-16 units, as CFString.h counts.
std::int64_t lengthOf(const Object* object) {
    std::int64_t units = 0;
    for (const char c : textOf(object)) {
        const auto byte = static_cast<unsigned char>(c);
        units += (byte & 0xC0) == 0x80 ? 0 : byte >= 0xF0 ? 2 : 1;
    }
    return units;
}

constexpr std::uint32_t utf8Encoding = 0x08000100; // kCFStringEncodingUTF8

std::int64_t maximumSize(std::int64_t length, std::uint32_t encoding) {
    if (encoding != utf8Encoding)
        endRun("a string encoding that is not UTF-8");
    return 3 * length;
}

Object* makeString(const void* /*allocator*/, const char* bytes, std::int64_t size,
                   std::uint32_t encoding, std::uint32_t /*isExternal*/) {
    if (encoding != utf8Encoding)
        endRun("a string encoding that is not UTF-8");
    return stringOf({bytes, static_cast<std::size_t>(size)});
}

struct Range {
    std::int64_t location;
    std::int64_t length;
};

std::int64_t bytesOf(const Object* object, Range range, std::uint32_t encoding, std::uint32_t,
                     std::uint32_t, char* to, std::int64_t room, std::int64_t* used) {
    const std::string text = textOf(object);
    if (encoding != utf8Encoding || range.location != 0 || range.length != lengthOf(object)
        || std::cmp_less(room, text.size()))
        endRun("a part of a string is wanted");
    std::memcpy(to, text.data(), text.size());
    *used = static_cast<std::int64_t>(text.size());
    return range.length;
}

/// Returns an object that still belongs to its container, as with every "Get" function.
Object* valueIn(const CFDictionary* object, const Object* key) {
    const auto found = object->values.find(textOf(key));
    return found == object->values.end() ? nullptr : found->second;
}

std::int64_t countOf(const CFArray* object) {
    return static_cast<std::int64_t>(object->values.size());
}

Object* valueAt(const CFArray* object, std::int64_t index) {
    if (std::cmp_greater_equal(index, object->values.size()) || index < 0)
        misuse("an index outside an array");
    return object->values[static_cast<std::size_t>(index)];
}

void* defaultAllocator = nullptr;

} // namespace

Object* booleanOf(bool value) {
    static auto constants = [] {
        std::array<CFBoolean, 2> made{};
        made[1].value = true;
        for (CFBoolean& each : made)
            each.isa = &booleanClass.object;
        return made;
    }();
    makeImmortal(&constants[value ? 1 : 0]);
    return &constants[value ? 1 : 0];
}

CFNumber* numberOf(std::int64_t value) {
    auto* const made = allocate<CFNumber>(numberClass);
    made->value = value;
    return made;
}

CFArray* arrayOf(std::vector<Object*> values) {
    auto* const made = allocate<CFArray>(arrayClass);
    made->values = std::move(values);
    return made;
}

CFDictionary* makeDictionary() {
    return allocate<CFDictionary>(dictionaryClass);
}

namespace {

constexpr auto shims = std::to_array<Shim>({
    {"_CFArrayGetCount", address<countOf>},
    {"_CFArrayGetValueAtIndex", address<valueAt>},
    {"_CFBooleanGetTypeID", address<theType<boolean>>},
    {"_CFBooleanGetValue", address<booleanValue>},
    {"_CFDictionaryGetValue", address<valueIn>},
    {"_CFGetTypeID", address<typeOf>},
    {"_CFNumberGetTypeID", address<theType<number>>},
    {"_CFNumberGetValue", address<numberValue>},
    {"_CFRelease", address<releaseReference>},
    {"_CFStringCreateWithBytes", address<makeString>},
    {"_CFStringGetBytes", address<bytesOf>},
    {"_CFStringGetLength", address<lengthOf>},
    {"_CFStringGetMaximumSizeForEncoding", address<maximumSize>},
    {"_CFStringGetTypeID", address<theType<string>>},
    {"_kCFAllocatorDefault", address<&defaultAllocator>},
});

} // namespace

Shims coreFoundationShims() {
    return shims;
}

} // namespace velmo
