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

CFTypeID CFBooleanGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef boolean);
CFTypeID CFNumberGetTypeID(void);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

// CFString.h, macOS 10.0
typedef const struct OpaqueCFString* CFStringRef;
typedef uint32_t CFStringEncoding;

enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

CFTypeID CFStringGetTypeID(void);
CFIndex CFStringGetLength(CFStringRef string);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding,
                         UInt8 lossByte, Boolean isExternalRepresentation, UInt8* buffer,
                         CFIndex size, CFIndex* usedSize);
#define CFSTR(literal) ((CFStringRef)__builtin___CFStringMakeConstantString(literal))

// CFArray.h, macOS 10.0
typedef const struct OpaqueCFArray* CFArrayRef;
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

// CFDictionary.h, macOS 10.0
typedef const struct OpaqueCFDictionary* CFDictionaryRef;
typedef struct OpaqueCFDictionary* CFMutableDictionaryRef;
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);

#ifdef __cplusplus
}
#endif
