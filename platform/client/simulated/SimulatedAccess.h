#pragma once

#include "platform/client/PowerAccess.h"

#include <asio/io_context.hpp>

#include <filesystem>
#include <optional>

namespace velmo {

/// Returns the simulated Mac that lives in a folder, or nothing if there is none in order. Its link
/// works, and calls back, on the thread that runs the context.
std::optional<PowerAccess> accessSimulatedMac(asio::io_context& context,
                                              const std::filesystem::path& folder);

} // namespace velmo
