#pragma once

#include "core/support/Record.h"

#include <optional>
#include <string>

namespace velmo {

/// Reports that a shortcut of the window mosaic was pressed, or that the mosaic was switched on or
/// off.
struct MosaicEvent {
    std::string type;
    std::optional<std::string> id; ///< the action, one of `MosaicHotkey::ids`
    std::optional<bool> on;        ///< whether it was switched on; absent for a shortcut

    static constexpr auto fields =
        std::tuple{field("type", &MosaicEvent::type), field("id", &MosaicEvent::id),
                   field("on", &MosaicEvent::on)};
    bool operator==(const MosaicEvent&) const = default;
};

} // namespace velmo
