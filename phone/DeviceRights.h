#pragma once

#include "core/support/RawText.h"

#include <array>
#include <string_view>

namespace velmo {

/// What a device may do with the sessions.
enum class DeviceRights {
    use,  ///< everything that the page offers
    view, ///< see the sessions and their output; neither type, resize, start nor end
};

template<>
inline constexpr auto rawTexts<DeviceRights> = std::to_array<std::string_view>({"use", "view"});

} // namespace velmo
