#pragma once

#include "tools/command-line/CommandLine.h"

#include <string_view>

/// The command line of velmo-phone.
namespace velmo {

extern const CommandLine::Program phoneCommandLine;

namespace PhoneVerb {

inline constexpr std::string_view serve = "serve";
inline constexpr std::string_view admit = "admit";
inline constexpr std::string_view devices = "devices";
inline constexpr std::string_view revoke = "revoke";

} // namespace PhoneVerb

} // namespace velmo
