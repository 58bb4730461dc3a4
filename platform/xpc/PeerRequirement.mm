#include "platform/xpc/PeerRequirement.h"

#include "platform/macos/CoreFoundation.h"
#include "platform/macos/NSStringText.h"

namespace velmo {

bool requireOfPeer(NSXPCConnection* connection, const std::string& requirement,
                   const std::function<void(std::string_view message)>& log) {
    NSString* const text = stringFrom(requirement);
    if (!text) {
        log("the code-signing requirement is no UTF-8");
        return false;
    }
    @try {
        [connection setCodeSigningRequirement:text];
        return true;
    } @catch (NSException* exception) {
        log("the code-signing requirement is malformed: "
            + textIn((__bridge CFTypeRef)exception.reason).value_or("no reason given"));
        return false;
    }
}

} // namespace velmo
