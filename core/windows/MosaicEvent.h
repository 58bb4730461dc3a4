#pragma once

#include "core/support/Record.h"

#include <optional>
#include <string>

namespace velmo {

/// Tells of the window mosaic: a shortcut that was pressed, or that it was switched on or off.
struct MosaicEvent {
    std::string type;
    std::optional<std::string> id; ///< the action, one of `MosaicHotkey::ids`
    std::optional<bool> on;

    static constexpr auto fields =
        std::tuple{field("type", &MosaicEvent::type), field("id", &MosaicEvent::id),
                   field("on", &MosaicEvent::on)};
    bool operator==(const MosaicEvent&) const = default;
};

} // namespace velmo
