#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <string>

namespace velmo {

/// Describes what has the keyboard focus at one moment.
struct FocusSnapshot {
    std::string identity;  ///< of the focused element; compared byte by byte
    bool editable = false; ///< with `password`, from `TypingSafety::focusFlags`
    bool password = false;
    std::int32_t pid = 0; ///< of the focused application

    static constexpr auto fields = std::tuple{
        field("identity", &FocusSnapshot::identity), field("editable", &FocusSnapshot::editable),
        field("password", &FocusSnapshot::password), field("pid", &FocusSnapshot::pid)};
    bool operator==(const FocusSnapshot&) const = default;
};

} // namespace velmo
