#include "tests/platform/macos/FakeFrameworks.h"

#include "core/support/Ascii.h"
#include "core/support/Text.h"

#include <IOKit/IOKitLib.h>
#include <IOKit/ps/IOPowerSources.h>
#include <Security/Security.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace velmo::fake {

Mac* mac = nullptr;

int Mac::owed() const {
    int sum = std::abs(owedServices);
    for (const Object& object : objects)
        sum += std::abs(object.owed);
    return sum;
}

namespace {

Object& object(CFTypeRef reference) {
    return *static_cast<Object*>(const_cast<void*>(reference));
}

template<class Ref>
Ref get(Object* found) {
    return reinterpret_cast<Ref>(found);
}

template<class Ref>
Ref create(Object* found) {
    if (found)
        ++found->owed;
    return get<Ref>(found);
}

template<class Value>
const Value& valueOf(CFTypeRef reference) {
    return std::get<Value>(object(reference).value);
}

template<class Value>
const CFTypeID typeOf = decltype(Object::value)(std::in_place_type<Value>).index();

/// Int and real numbers are of one type.
CFTypeID typeOfNumber() {
    return typeOf<std::int64_t>;
}

constexpr io_service_t rootDomain = 7;

std::u16string wide(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

std::u16string decoded(std::string_view utf8) {
    std::u16string units;
    for (const Text::Scalar& scalar : Text::Scalars(utf8)) {
        if (scalar.value >= 0x10000)
            units += static_cast<char16_t>(0xD7C0 + (scalar.value >> 10));
        units += static_cast<char16_t>(scalar.value >= 0x10000 ? 0xDC00 | (scalar.value & 0x3FF)
                                                               : scalar.value);
    }
    return units;
}

std::string_view bytesAt(const UInt8* bytes, CFIndex length) {
    return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

Object* find(const std::map<std::string, Object*>& objects, std::string_view key) {
    const auto found = objects.find(std::string(key));
    return found == objects.end() ? nullptr : found->second;
}

bool isDigit(char16_t unit) {
    return unit < 0x80 && Ascii::isDigit(static_cast<char>(unit));
}

/// Compares as the text does without regard to case, and numbers of few digits by value if asked.
std::u16string collated(std::u16string_view text, bool numerically) {
    std::u16string key;
    for (; !text.empty(); text.remove_prefix(1)) {
        const char16_t unit = text.front();
        const auto digits = std::ranges::find_if_not(text, isDigit) - text.begin();
        if (numerically && digits > 0 && (key.empty() || !isDigit(key.back())))
            key.append(20 - static_cast<std::size_t>(digits), u'0');
        key += unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
    }
    return key;
}

bool isSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDFFF;
}

} // namespace

/// In place of the compiler's constant strings.
CFTypeRef constantString(const char* text) {
    return get<CFTypeRef>(mac->make(wide(text)));
}

} // namespace velmo::fake

using namespace velmo::fake;

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const mach_port_t kIOMainPortDefault = 0;

CFTypeID CFGetTypeID(CFTypeRef value) {
    const CFTypeID type = object(value).value.index();
    return type == typeOf<double> ? typeOfNumber() : type;
}

void CFRelease(CFTypeRef value) {
    --object(value).owed;
}

CFTypeID CFBooleanGetTypeID() {
    return typeOf<bool>;
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    return valueOf<bool>(boolean) ? 1 : 0;
}

CFTypeID CFNumberGetTypeID() {
    return typeOfNumber();
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
    return std::holds_alternative<double>(object(number).value) ? 1 : 0;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    if (type == kCFNumberDoubleType) {
        *static_cast<double*>(value) = valueOf<double>(number);
        return 1;
    }
    auto& out = *static_cast<std::int64_t*>(value);
    if (const auto* real = std::get_if<double>(&object(number).value)) {
        out = static_cast<std::int64_t>(*real);
        return std::trunc(*real) == *real ? 1 : 0;
    }
    out = valueOf<std::int64_t>(number);
    return 1;
}

CFTypeID CFStringGetTypeID() {
    return typeOf<std::u16string>;
}

CFIndex CFStringGetLength(CFStringRef string) {
    return static_cast<CFIndex>(valueOf<std::u16string>(string).size());
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding /*encoding*/) {
    return length * 3;
}

/// Of the basic plane only; surrogates count as lone ones.
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding /*encoding*/,
                         UInt8 /*lossByte*/, Boolean /*isExternalRepresentation*/, UInt8* buffer,
                         CFIndex size, CFIndex* usedSize) {
    std::u16string_view text = valueOf<std::u16string>(string);
    text = text.substr(static_cast<std::size_t>(range.location),
                       static_cast<std::size_t>(range.length));
    std::string bytes;
    CFIndex converted = 0;
    for (const char16_t unit : text) {
        if (isSurrogate(unit))
            break;
        velmo::Text::append(bytes, unit);
        ++converted;
    }
    if (static_cast<CFIndex>(bytes.size()) > size)
        std::abort();
    bytes.copy(reinterpret_cast<char*>(buffer), bytes.size());
    *usedSize = static_cast<CFIndex>(bytes.size());
    return converted;
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef /*allocator*/, const UInt8* bytes,
                                    CFIndex length, CFStringEncoding /*encoding*/,
                                    Boolean /*isExternalRepresentation*/) {
    const std::string_view text = bytesAt(bytes, length);
    return velmo::Text::isValidUtf8(text) ? create<CFStringRef>(mac->make(decoded(text))) : nullptr;
}

/// Case is never regarded; both other options must be right for the fake to be of use.
CFComparisonResult CFStringCompare(CFStringRef first, CFStringRef second,
                                   CFStringCompareFlags options) {
    const bool numerically = (options & kCFCompareNumerically) != 0;
    if ((options & ~CFStringCompareFlags{kCFCompareNumerically}) != 33)
        std::abort();
    const int order = collated(valueOf<std::u16string>(first), numerically)
                          .compare(collated(valueOf<std::u16string>(second), numerically));
    if (order == 0)
        return 0;
    return order < 0 ? -1 : 1;
}

CFTypeID CFDataGetTypeID() {
    return typeOf<velmo::Bytes>;
}

CFDataRef CFDataCreate(CFAllocatorRef /*allocator*/, const UInt8* bytes, CFIndex length) {
    return create<CFDataRef>(mac->make(velmo::Bytes(bytes, bytes + length)));
}

CFIndex CFDataGetLength(CFDataRef data) {
    return static_cast<CFIndex>(valueOf<velmo::Bytes>(data).size());
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
    return valueOf<velmo::Bytes>(data).data();
}

CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef /*allocator*/, CFDataRef data,
                                               CFOptionFlags /*options*/,
                                               CFPropertyListFormat* /*format*/,
                                               CFErrorRef* /*error*/) {
    return create<CFPropertyListRef>(
        find(mac->propertyLists, velmo::textOf(valueOf<velmo::Bytes>(data))));
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef /*allocator*/, const UInt8* path,
                                                 CFIndex length, Boolean /*isDirectory*/) {
    return create<CFURLRef>(mac->make(Url{std::string(bytesAt(path, length))}));
}

CFBundleRef CFBundleCreate(CFAllocatorRef /*allocator*/, CFURLRef url) {
    return create<CFBundleRef>(find(mac->bundles, valueOf<Url>(url).path));
}

CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key) {
    return CFDictionaryGetValue(reinterpret_cast<CFDictionaryRef>(bundle), key);
}

CFStringRef CFBundleGetIdentifier(CFBundleRef bundle) {
    return static_cast<CFStringRef>(
        CFBundleGetValueForInfoDictionaryKey(bundle, CFSTR("CFBundleIdentifier")));
}

CFTypeID CFArrayGetTypeID() {
    return typeOf<Array>;
}

CFTypeID CFDictionaryGetTypeID() {
    return typeOf<Dictionary>;
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
    return static_cast<CFIndex>(valueOf<Dictionary>(dictionary).size());
}

/// The keys are objects that live as long as the fake.
void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys,
                                  const void** values) {
    for (const auto& [key, value] : valueOf<Dictionary>(dictionary)) {
        *keys++ = mac->make(key);
        *values++ = value;
    }
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    return static_cast<CFIndex>(valueOf<Array>(array).size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    return valueOf<Array>(array).at(static_cast<std::size_t>(index));
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    const auto& entries = valueOf<Dictionary>(dictionary);
    const auto found = entries.find(valueOf<std::u16string>(key));
    return found == entries.end() ? nullptr : found->second;
}

CFMutableDictionaryRef IOServiceMatching(const char* name) {
    return create<CFMutableDictionaryRef>(
        mac->make(Dictionary{{u"IOProviderClass", mac->make(wide(name))}}));
}

io_service_t IOServiceGetMatchingService(mach_port_t /*mainPort*/, CFDictionaryRef matching) {
    const Object* const name = valueOf<Dictionary>(matching).at(u"IOProviderClass");
    CFRelease(matching);
    if (!mac->hasRootDomain || std::get<std::u16string>(name->value) != u"IOPMrootDomain")
        return 0;
    ++mac->owedServices;
    return rootDomain;
}

CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key,
                                          CFAllocatorRef /*allocator*/, IOOptionBits /*options*/) {
    const auto found = mac->rootDomain.find(valueOf<std::u16string>(key));
    return entry != rootDomain || found == mac->rootDomain.end() ? nullptr
                                                                 : create<CFTypeRef>(found->second);
}

io_connect_t IOPMFindPowerManagement(mach_port_t /*mainPort*/) {
    if (!mac->hasPowerManagement)
        return 0;
    ++mac->owedServices;
    return rootDomain;
}

IOReturn IOPMSleepSystem(io_connect_t /*connection*/) {
    ++mac->sleepRequests;
    return mac->takesSleepRequests ? kIOReturnSuccess : -1;
}

kern_return_t IOServiceClose(io_connect_t connection) {
    return IOObjectRelease(connection);
}

kern_return_t IOObjectRelease(io_object_t /*object*/) {
    --mac->owedServices;
    return 0;
}

CFTypeRef IOPSCopyPowerSourcesInfo() {
    return mac->hasSnapshot ? create<CFTypeRef>(mac->make(Other{})) : nullptr;
}

CFStringRef IOPSGetProvidingPowerSourceType(CFTypeRef /*snapshot*/) {
    return get<CFStringRef>(mac->providingType);
}

CFArrayRef IOPSCopyPowerSourcesList(CFTypeRef /*snapshot*/) {
    return create<CFArrayRef>(mac->powerSources);
}

CFDictionaryRef IOPSGetPowerSourceDescription(CFTypeRef /*snapshot*/, CFTypeRef source) {
    const bool described = std::holds_alternative<Dictionary>(object(source).value);
    return described ? static_cast<CFDictionaryRef>(source) : nullptr;
}

const CFStringRef kSecCodeInfoTeamIdentifier = [] {
    static Object key{.value = std::u16string(u"teamid")};
    return get<CFStringRef>(&key);
}();

OSStatus SecCodeCopySelf(SecCSFlags /*flags*/, SecCodeRef* self) {
    if (mac->failingSigningStep == 1)
        return -1;
    *self = create<SecCodeRef>(mac->make(Other{}));
    return errSecSuccess;
}

OSStatus SecCodeCopyStaticCode(SecCodeRef /*code*/, SecCSFlags /*flags*/,
                               SecStaticCodeRef* staticCode) {
    if (mac->failingSigningStep == 2)
        return -1;
    *staticCode = create<SecStaticCodeRef>(mac->make(Other{}));
    return errSecSuccess;
}

OSStatus SecCodeCopySigningInformation(SecStaticCodeRef /*code*/, SecCSFlags flags,
                                       CFDictionaryRef* information) {
    // Without the flag the information holds no team.
    if (mac->failingSigningStep == 3 || flags != 2)
        return -1;
    *information = create<CFDictionaryRef>(mac->signingInformation);
    return errSecSuccess;
}

} // extern "C"
