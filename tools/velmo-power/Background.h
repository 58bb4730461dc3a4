#pragma once

#include "platform/posix/ProcessBirth.h"

#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// `velmo-power hold --background`: the process that holds is another one, started by the same
/// command line with a descriptor before it, on which it says when the Mac is held.
namespace velmo {

/// Starts that process and waits until it holds, then prints its process id. Returns the exit
/// status: its own if it ended instead.
int holdInBackground(const ProcessBirth& birth, std::span<const std::string_view> arguments);

/// Takes the descriptor, if this is that process, off the front of the arguments, and leaves the
/// terminal of whoever started it.
std::optional<int> takeReadyDescriptor(std::vector<std::string_view>& arguments);

} // namespace velmo
