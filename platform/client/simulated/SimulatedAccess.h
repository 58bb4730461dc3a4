#pragma once

#include "platform/client/PowerAccess.h"

#include <asio/io_context.hpp>

#include <expected>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace velmo {

/// Returns the simulated Mac that lives in a folder, or one line that says what is wrong with the
/// folder and what to do instead. The link works and calls back on the thread that runs the
/// context. `log` is told once if the daemon has too many clients.
std::expected<PowerAccess, std::string>
accessSimulatedMac(asio::io_context& context, const std::filesystem::path& folder,
                   std::function<void(std::string_view message)> log = {});

} // namespace velmo
