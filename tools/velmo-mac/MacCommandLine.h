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

/// Applies the options of `set` to the Mac. If a value is refused, returns a line that says which
/// values are accepted; the Mac may then be changed in part, and must be discarded.
std::optional<std::string> applyChanges(const CommandLine::Line& line, SimulatedMac& mac);

} // namespace velmo
