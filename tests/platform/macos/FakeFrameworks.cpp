#include "tests/platform/macos/FakeFrameworks.h"

#include "core/support/Text.h"

#include <IOKit/IOKitLib.h>
#include <IOKit/ps/IOPowerSources.h>
#include <Security/Security.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

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

constexpr io_service_t rootDomain = 7;
Object teamKey{.value = std::string("teamid")};

std::string_view bytesAt(const UInt8* bytes, CFIndex length) {
    return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

Object* find(const Dictionary& objects, std::string_view key) {
    const auto found = objects.find(key);
    return found == objects.end() ? nullptr : found->second;
}

} // namespace

/// Returns the object that replaces a constant string of the compiler.
CFTypeRef constantString(const char* text) {
    return get<CFTypeRef>(mac->text(text));
}

} // namespace velmo::fake

using namespace velmo::fake;

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const mach_port_t kIOMainPortDefault = 0;

CFTypeID CFGetTypeID(CFTypeRef value) {
    const CFTypeID type = object(value).value.index();
    return type == typeOf<double> ? CFNumberGetTypeID() : type;
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

/// Integers and reals are of one type.
CFTypeID CFNumberGetTypeID() {
    return typeOf<std::int64_t>;
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
    return std::holds_alternative<double>(object(number).value) ? 1 : 0;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    if (type == kCFNumberDoubleType) {
        *static_cast<double*>(value) = valueOf<double>(number);
        return 1;
    }
    const auto* real = std::get_if<double>(&object(number).value);
    *static_cast<std::int64_t*>(value) =
        real ? static_cast<std::int64_t>(*real) : valueOf<std::int64_t>(number);
    return !real || std::trunc(*real) == *real ? 1 : 0;
}

CFTypeID CFStringGetTypeID() {
    return typeOf<std::string>;
}

CFIndex CFStringGetLength(CFStringRef string) {
    return static_cast<CFIndex>(velmo::Text::utf16Length(valueOf<std::string>(string)));
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding) {
    return length * 3;
}

/// Converts the whole text, whatever the range. The conversion stops at a surrogate.
CFIndex CFStringGetBytes(CFStringRef string, CFRange, CFStringEncoding, UInt8, Boolean,
                         UInt8* buffer, CFIndex size, CFIndex* usedSize) {
    std::string_view text = valueOf<std::string>(string);
    text = text.substr(0, text.find('\xED'));
    if (static_cast<CFIndex>(text.size()) > size)
        std::abort();
    *usedSize = static_cast<CFIndex>(text.copy(reinterpret_cast<char*>(buffer), text.size()));
    return static_cast<CFIndex>(velmo::Text::utf16Length(text));
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex length,
                                    CFStringEncoding, Boolean) {
    const std::string_view text = bytesAt(bytes, length);
    return velmo::Text::isValidUtf8(text) ? create<CFStringRef>(mac->text(text)) : nullptr;
}

/// Compares without regard to case; the flags must ask for that and for the locale. By value, the
/// shorter text comes first.
CFComparisonResult CFStringCompare(CFStringRef first, CFStringRef second,
                                   CFStringCompareFlags options) {
    if ((options & ~CFStringCompareFlags{kCFCompareNumerically}) != 33)
        std::abort();
    const std::string a = velmo::Text::lowercased(valueOf<std::string>(first));
    const std::string b = velmo::Text::lowercased(valueOf<std::string>(second));
    if ((options & kCFCompareNumerically) != 0 && a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return std::clamp(a.compare(b), -1, 1);
}

CFTypeID CFDataGetTypeID() {
    return typeOf<velmo::Bytes>;
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
    return create<CFDataRef>(mac->make(velmo::Bytes(bytes, bytes + length)));
}

CFIndex CFDataGetLength(CFDataRef data) {
    return static_cast<CFIndex>(valueOf<velmo::Bytes>(data).size());
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
    return valueOf<velmo::Bytes>(data).data();
}

CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef, CFDataRef data, CFOptionFlags,
                                               CFPropertyListFormat*, CFErrorRef*) {
    return create<CFPropertyListRef>(
        find(mac->propertyLists, velmo::textOf(valueOf<velmo::Bytes>(data))));
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* path, CFIndex length,
                                                 Boolean) {
    return create<CFURLRef>(mac->text(bytesAt(path, length)));
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef url) {
    return create<CFBundleRef>(find(mac->bundles, valueOf<std::string>(url)));
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

/// Returns keys that live as long as the fake.
void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys,
                                  const void** values) {
    for (const auto& [key, value] : valueOf<Dictionary>(dictionary)) {
        *keys++ = mac->text(key);
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
    return find(valueOf<Dictionary>(dictionary), valueOf<std::string>(key));
}

CFMutableDictionaryRef IOServiceMatching(const char* name) {
    return create<CFMutableDictionaryRef>(
        mac->make(Dictionary{{"IOProviderClass", mac->text(name)}}));
}

io_service_t IOServiceGetMatchingService(mach_port_t, CFDictionaryRef matching) {
    const Object* const name = valueOf<Dictionary>(matching).at("IOProviderClass");
    CFRelease(matching);
    if (!mac->hasRootDomain || std::get<std::string>(name->value) != "IOPMrootDomain")
        return 0;
    ++mac->owedServices;
    return rootDomain;
}

CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key,
                                          CFAllocatorRef, IOOptionBits) {
    const auto found = mac->rootDomain.find(valueOf<std::string>(key));
    return entry != rootDomain || found == mac->rootDomain.end() ? nullptr
                                                                 : create<CFTypeRef>(found->second);
}

io_connect_t IOPMFindPowerManagement(mach_port_t) {
    if (!mac->hasPowerManagement)
        return 0;
    ++mac->owedServices;
    return rootDomain;
}

IOReturn IOPMSleepSystem(io_connect_t) {
    ++mac->sleepRequests;
    return mac->takesSleepRequests ? kIOReturnSuccess : -1;
}

kern_return_t IOServiceClose(io_connect_t connection) {
    return IOObjectRelease(connection);
}

kern_return_t IOObjectRelease(io_object_t) {
    --mac->owedServices;
    return 0;
}

CFTypeRef IOPSCopyPowerSourcesInfo() {
    return mac->hasSnapshot ? create<CFTypeRef>(mac->make(Other{})) : nullptr;
}

CFStringRef IOPSGetProvidingPowerSourceType(CFTypeRef) {
    return get<CFStringRef>(mac->providingType);
}

CFArrayRef IOPSCopyPowerSourcesList(CFTypeRef) {
    return create<CFArrayRef>(mac->powerSources);
}

CFDictionaryRef IOPSGetPowerSourceDescription(CFTypeRef, CFTypeRef source) {
    const bool described = std::holds_alternative<Dictionary>(object(source).value);
    return described ? static_cast<CFDictionaryRef>(source) : nullptr;
}

const CFStringRef kSecCodeInfoTeamIdentifier = get<CFStringRef>(&teamKey);

OSStatus SecCodeCopySelf(SecCSFlags, SecCodeRef* self) {
    if (mac->failingSigningStep == 1)
        return -1;
    *self = create<SecCodeRef>(mac->make(Other{}));
    return errSecSuccess;
}

OSStatus SecCodeCopyStaticCode(SecCodeRef, SecCSFlags, SecStaticCodeRef* staticCode) {
    if (mac->failingSigningStep == 2)
        return -1;
    *staticCode = create<SecStaticCodeRef>(mac->make(Other{}));
    return errSecSuccess;
}

OSStatus SecCodeCopySigningInformation(SecStaticCodeRef, SecCSFlags flags,
                                       CFDictionaryRef* information) {
    // Without the flag the information names no team.
    if (mac->failingSigningStep == 3 || flags != 2)
        return -1;
    *information = create<CFDictionaryRef>(mac->signingInformation);
    return errSecSuccess;
}

} // extern "C"
