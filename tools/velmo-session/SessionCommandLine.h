#pragma once

#include "tools/command-line/CommandLine.h"

#include <string_view>

/// The command line of velmo-session.
namespace velmo {

extern const CommandLine::Program sessionCommandLine;

namespace SessionOption {

inline constexpr std::string_view attachOrCreate = "--attach-or-create";
inline constexpr std::string_view detachKey = "--detach-key";
inline constexpr std::string_view lines = "--lines";
inline constexpr std::string_view transcript = "--transcript";
inline constexpr std::string_view viewOnly = "--view-only";

} // namespace SessionOption

namespace SessionVerb {

inline constexpr std::string_view start = "start";
inline constexpr std::string_view attach = "attach";
inline constexpr std::string_view list = "list";
inline constexpr std::string_view send = "send";
inline constexpr std::string_view peek = "peek";
inline constexpr std::string_view wait = "wait";
inline constexpr std::string_view detach = "detach";
inline constexpr std::string_view end = "end";
inline constexpr std::string_view stream = "stream";
inline constexpr std::string_view serve = "serve";
inline constexpr std::string_view service = "service";
inline constexpr std::string_view ptyAttach = "pty-attach";

} // namespace SessionVerb

} // namespace velmo
