#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <string>
#include <string_view>

namespace velmo {

/// Makes the system reject a peer that does not satisfy the code-signing requirement. It is called
/// before the connection is resumed. Returns false if the text is not a requirement, and tells the
/// log so; the connection then has no requirement at all and must not be used.
[[nodiscard]] bool requireOfPeer(NSXPCConnection* connection, const std::string& requirement,
                                 const std::function<void(std::string_view message)>& log);

} // namespace velmo
