#pragma once

#include "core/input/SymbolicHotKeys.h"

#include <string>
#include <variant>
#include <vector>

namespace velmo {

/// Opens an application or a folder.
struct OpenAction {
    std::string path;
    std::vector<std::string> arguments;

    bool operator==(const OpenAction&) const = default;
};

/// Clicks the clock in the menu bar.
struct PressClockAction {
    bool operator==(const PressClockAction&) const = default;
};

/// Does nothing: this Mac has no way to carry the gesture out.
struct NoAction {
    bool operator==(const NoAction&) const = default;
};

/// How a gesture is carried out. A `HotKey` is pressed.
using GestureAction = std::variant<SymbolicHotKeys::HotKey, OpenAction, PressClockAction, NoAction>;

} // namespace velmo
