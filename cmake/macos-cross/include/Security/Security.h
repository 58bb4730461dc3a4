#pragma once

/// The part of Security's code-signing services that the project calls, for the cross build alone.
/// Written from the public documentation; each group names the framework's own header and the macOS
/// version that brought it.

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

// SecBase.h, macOS 10.3
enum : OSStatus { errSecSuccess = 0 };

// CSCommon.h, macOS 10.6
typedef uint32_t SecCSFlags;

enum : SecCSFlags { kSecCSDefaultFlags = 0 };
typedef struct OpaqueSecCode* SecCodeRef;
typedef const struct OpaqueSecCode* SecStaticCodeRef;

// SecCode.h, macOS 10.6
OSStatus SecCodeCopySelf(SecCSFlags flags, SecCodeRef* self);
OSStatus SecCodeCopyStaticCode(SecCodeRef code, SecCSFlags flags, SecStaticCodeRef* staticCode);

enum : SecCSFlags { kSecCSSigningInformation = 1 << 1 };

OSStatus SecCodeCopySigningInformation(SecStaticCodeRef code, SecCSFlags flags,
                                       CFDictionaryRef* information);
extern const CFStringRef kSecCodeInfoTeamIdentifier;

#ifdef __cplusplus
}
#endif
