#include "platform/client/PowerAccess.h"

namespace velmo {

std::optional<PowerAccess> accessThisMac(ClientContext /*context*/) {
    return std::nullopt;
}

} // namespace velmo
