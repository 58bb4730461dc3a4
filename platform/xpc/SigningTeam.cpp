#include "platform/xpc/SigningTeam.h"

#include "platform/macos/CoreFoundation.h"

#include <Security/Security.h>

namespace velmo {

std::optional<std::string> currentSigningTeam() {
    Owned<SecCodeRef> code;
    if (SecCodeCopySelf(kSecCSDefaultFlags, code.out()) != errSecSuccess)
        return std::nullopt;
    Owned<SecStaticCodeRef> staticCode;
    if (SecCodeCopyStaticCode(code.get(), kSecCSDefaultFlags, staticCode.out()) != errSecSuccess)
        return std::nullopt;
    Owned<CFDictionaryRef> information;
    if (SecCodeCopySigningInformation(staticCode.get(), kSecCSSigningInformation, information.out())
            != errSecSuccess
        || !information)
        return std::nullopt;
    return textIn(CFDictionaryGetValue(information.get(), kSecCodeInfoTeamIdentifier));
}

} // namespace velmo
