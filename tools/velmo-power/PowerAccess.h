#pragma once

#include "daemon/PowerMachine.h"
#include "tools/velmo-power/HoldKeeper.h"

#include <asio/io_context.hpp>

#include <filesystem>
#include <memory>
#include <optional>

namespace velmo {

/// A Mac as this tool reaches it: what anyone may read of it, and the way to its daemon.
struct PowerAccess {
    std::unique_ptr<PowerMachine> machine;
    std::unique_ptr<PowerLink> link; ///< calls back on the thread that runs the context
};

/// The Mac that lives in a folder; absent when there is none.
std::optional<PowerAccess> accessSimulatedMac(asio::io_context& context,
                                              const std::filesystem::path& folder);

/// The Mac that this program runs on; absent on other systems.
std::optional<PowerAccess> accessThisMac(asio::io_context& context);

} // namespace velmo
