#pragma once

#include "core/support/RawText.h"
#include "core/support/Record.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// What happened to the window mosaic; the word is `MosaicEvent::type`.
enum class MosaicEventType {
    action, ///< a shortcut was pressed, and `id` names its action
    pause,  ///< the mosaic was paused (`on` is true) or goes on (false)
};

template<>
inline constexpr auto rawTexts<MosaicEventType> =
    std::to_array<std::string_view>({"action", "pause"});

/// Reports that a shortcut of the window mosaic was pressed, or that the mosaic was paused or goes
/// on:
///
///     {"id":"grid","type":"action"}
///     {"on":true,"type":"pause"}
struct MosaicEvent {
    std::string type;              ///< a text of `MosaicEventType`
    std::optional<std::string> id; ///< one of `MosaicHotkey::ids`; absent for a pause
    std::optional<bool> on;        ///< true while the mosaic is paused; absent for an action

    /// Reports a shortcut that was pressed. The shortcut "pause" is reported like any other; the
    /// pause itself follows as an event of its own.
    static MosaicEvent ofAction(std::string_view id) {
        return {.type = std::string(rawText(MosaicEventType::action)), .id = std::string(id)};
    }

    /// Reports that the mosaic was paused or goes on, whatever caused it.
    static MosaicEvent ofPause(bool on) {
        return {.type = std::string(rawText(MosaicEventType::pause)), .on = on};
    }

    static constexpr auto fields =
        std::tuple{field("type", &MosaicEvent::type), field("id", &MosaicEvent::id),
                   field("on", &MosaicEvent::on)};
    bool operator==(const MosaicEvent&) const = default;
};

} // namespace velmo
