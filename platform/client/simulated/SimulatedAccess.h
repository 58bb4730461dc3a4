#pragma once

#include "platform/client/PowerAccess.h"

#include <asio/io_context.hpp>

#include <expected>
#include <filesystem>
#include <string>

namespace velmo {

/// Returns the simulated Mac that lives in a folder, or one line that says what is wrong with the
/// folder and what to do instead. The link works and calls back on the thread that runs the
/// context.
std::expected<PowerAccess, std::string> accessSimulatedMac(asio::io_context& context,
                                                           const std::filesystem::path& folder);

} // namespace velmo
