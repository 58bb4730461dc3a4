#pragma once

#include <string_view>

/// Bundle identifiers, in lower case, of the system's own applications that ask for the user's
/// password or fingerprint.
namespace velmo::PasswordPrompts {

inline constexpr std::string_view securityAgent = "com.apple.securityagent";
inline constexpr std::string_view localAuthentication = "com.apple.localauthentication.uiagent";

} // namespace velmo::PasswordPrompts
