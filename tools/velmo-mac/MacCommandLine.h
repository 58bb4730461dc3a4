#pragma once

#include "platform/simulated/SimulatedMac.h"
#include "tools/command-line/CommandLine.h"

#include <optional>
#include <string>
#include <string_view>

/// The command line of velmo-mac.
namespace velmo {

extern const CommandLine::Program macCommandLine;

namespace MacVerb {

inline constexpr std::string_view create = "create";
inline constexpr std::string_view show = "show";
inline constexpr std::string_view set = "set";

} // namespace MacVerb

/// Does to the Mac what the options of `set` say. Returns one line that says what would do if a
/// value is none; the Mac is then of no use.
std::optional<std::string> applyChanges(const CommandLine::Line& line, SimulatedMac& mac);

} // namespace velmo
