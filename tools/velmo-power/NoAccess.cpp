#include "tools/velmo-power/PowerAccess.h"

namespace velmo {

std::optional<PowerAccess> accessThisMac(asio::io_context& /*context*/) {
    return std::nullopt;
}

} // namespace velmo
