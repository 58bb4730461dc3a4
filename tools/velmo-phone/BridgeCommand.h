#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace velmo {

/// What `velmo-phone serve` is told. What is absent stays as it was.
struct BridgeRequest {
    std::optional<std::uint16_t> port;
    std::optional<std::string> outside; ///< as `PhoneAddress` reads it; "" forgets it
    std::string mac{};                  ///< the folder of a simulated Mac; "": this computer
};

/// Serves the page until a signal ends the process. Returns the exit status.
int serveBridge(const BridgeRequest& request);

/// Prints an address for people, as text and on a terminal also as a QR code. Returns the exit
/// status.
int printAddress(const std::string& address);

} // namespace velmo
