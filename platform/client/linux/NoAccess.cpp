#include "platform/client/PowerAccess.h"

namespace velmo {

// By value: a connection keeps the context. NOLINTNEXTLINE(performance-unnecessary-value-param)
std::optional<PowerAccess> accessThisMac(ClientContext /*context*/) {
    return std::nullopt;
}

} // namespace velmo
