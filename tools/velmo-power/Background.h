#pragma once

#include "platform/posix/ProcessBirth.h"

#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// `velmo-power hold --background`: the process in front starts another one, by the same command
/// line with a descriptor before it. The other process takes the hold, and writes to the descriptor
/// once it has the hold or runs its command without.
namespace velmo {

/// Starts the other process, waits until it writes to the descriptor, and prints its process id.
/// Returns the exit status, which is that of the other process if it ended instead.
int holdInBackground(const ProcessBirth& birth, std::span<const std::string_view> arguments);

/// Takes the option by which the other process is told of the descriptor off the front of the
/// arguments, and returns its value. Absent, and no change, if they do not begin with it.
std::optional<std::string_view> takeReadyOption(std::vector<std::string_view>& arguments);

/// Takes the descriptor off the front of the arguments if this is the other process, which then
/// leaves its terminal (setsid). Absent in any other process, and if the descriptor is not open.
std::optional<int> takeReadyDescriptor(std::vector<std::string_view>& arguments);

} // namespace velmo
