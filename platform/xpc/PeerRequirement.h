#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <string>
#include <string_view>

namespace velmo {

/// Makes the system reject a peer that does not satisfy the code-signing requirement. Must be
/// called before the connection is resumed. Returns false, and logs why, if the text is not a
/// requirement; the connection then checks no peer and must not be used.
[[nodiscard]] bool requireOfPeer(NSXPCConnection* connection, const std::string& requirement,
                                 const std::function<void(std::string_view message)>& log);

} // namespace velmo
