#pragma once

#include "tools/command-line/CommandLine.h"

#include <string_view>

/// The command line of velmo-session.
namespace velmo {

extern const CommandLine::Program sessionCommandLine;

namespace SessionVerb {

inline constexpr std::string_view start = "start";
inline constexpr std::string_view attach = "attach";
inline constexpr std::string_view list = "list";
inline constexpr std::string_view end = "end";
inline constexpr std::string_view stream = "stream";
inline constexpr std::string_view serve = "serve";
inline constexpr std::string_view service = "service";
inline constexpr std::string_view ptyAttach = "pty-attach";

} // namespace SessionVerb

} // namespace velmo
