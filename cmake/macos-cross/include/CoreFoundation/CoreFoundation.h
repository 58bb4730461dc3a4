#pragma once

/// The part of CoreFoundation that the project calls, for the cross build alone. Written from the
/// public documentation; each group names the framework's own header and the macOS version that
/// brought it.

#include <MacTypes.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// CFBase.h, macOS 10.0
typedef const void* CFTypeRef;
typedef unsigned long CFTypeID;
typedef signed long CFIndex;
typedef unsigned long CFOptionFlags;
typedef CFTypeRef CFPropertyListRef;
typedef CFIndex CFComparisonResult;

enum : CFComparisonResult { kCFCompareEqualTo = 0 };

typedef struct {
    CFIndex location;
    CFIndex length;
} CFRange;

static inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
    const CFRange range = {location, length};
    return range;
}
typedef const struct OpaqueCFAllocator* CFAllocatorRef;
extern const CFAllocatorRef kCFAllocatorDefault;
CFTypeID CFGetTypeID(CFTypeRef value);
void CFRelease(CFTypeRef value);

// CFNumber.h, macOS 10.0
typedef const struct OpaqueCFBoolean* CFBooleanRef;
typedef const struct OpaqueCFNumber* CFNumberRef;
typedef CFIndex CFNumberType;

enum : CFNumberType { kCFNumberSInt64Type = 4 };

enum : CFNumberType { kCFNumberDoubleType = 13 };

CFTypeID CFBooleanGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef boolean);
CFTypeID CFNumberGetTypeID(void);
Boolean CFNumberIsFloatType(CFNumberRef number);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

// CFString.h, macOS 10.0
typedef const struct OpaqueCFString* CFStringRef;
typedef uint32_t CFStringEncoding;

enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

typedef CFOptionFlags CFStringCompareFlags;

enum : CFStringCompareFlags { kCFCompareCaseInsensitive = 1 };

enum : CFStringCompareFlags { kCFCompareLocalized = 32 };

enum : CFStringCompareFlags { kCFCompareNumerically = 64 };

CFTypeID CFStringGetTypeID(void);
CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);
CFComparisonResult CFStringCompare(CFStringRef first, CFStringRef second,
                                   CFStringCompareFlags options);
CFIndex CFStringGetLength(CFStringRef string);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding,
                         UInt8 lossByte, Boolean isExternalRepresentation, UInt8* buffer,
                         CFIndex size, CFIndex* usedSize);
#define CFSTR(literal) ((CFStringRef)__builtin___CFStringMakeConstantString(literal))

// CFArray.h, macOS 10.0
typedef const struct OpaqueCFArray* CFArrayRef;
CFTypeID CFArrayGetTypeID(void);
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

// CFDictionary.h, macOS 10.0
typedef const struct OpaqueCFDictionary* CFDictionaryRef;
typedef struct OpaqueCFDictionary* CFMutableDictionaryRef;
CFTypeID CFDictionaryGetTypeID(void);
CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary);
void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys,
                                  const void** values);
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);

// CFData.h, macOS 10.0
typedef const struct OpaqueCFData* CFDataRef;
CFTypeID CFDataGetTypeID(void);
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
CFIndex CFDataGetLength(CFDataRef data);
const UInt8* CFDataGetBytePtr(CFDataRef data);

// CFError.h, macOS 10.5
typedef struct OpaqueCFError* CFErrorRef;

// CFPropertyList.h, macOS 10.0
typedef CFIndex CFPropertyListFormat;

enum : CFOptionFlags { kCFPropertyListImmutable = 0 };

// CFPropertyList.h, macOS 10.6
CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef allocator, CFDataRef data,
                                               CFOptionFlags options, CFPropertyListFormat* format,
                                               CFErrorRef* error);

// CFURL.h, macOS 10.0
typedef const struct OpaqueCFURL* CFURLRef;
CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* path,
                                                 CFIndex length, Boolean isDirectory);

// CFBundle.h, macOS 10.0
typedef struct OpaqueCFBundle* CFBundleRef;
CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef url);
CFStringRef CFBundleGetIdentifier(CFBundleRef bundle);
CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key);

#ifdef __cplusplus
}
#endif
