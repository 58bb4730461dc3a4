#pragma once

#include "core/support/Record.h"

#include <string>

namespace velmo {

/// Tells the phone what has the keyboard focus:
///
///     {"editable":true,"password":false,"target":"1","type":"focus"}
struct FocusEvent {
    std::string target; ///< `FocusTracker::revision` in decimal; requests to type name it
    bool editable = false;
    bool password = false;

    static constexpr auto fields = std::tuple{
        constant("type", "focus"), field("target", &FocusEvent::target),
        field("editable", &FocusEvent::editable), field("password", &FocusEvent::password)};
    bool operator==(const FocusEvent&) const = default;
};

} // namespace velmo
