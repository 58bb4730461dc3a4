#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// The application whose window is to be arranged.
struct AppTarget {
    std::int32_t pid = 0;
    std::string appId;                  ///< bundle identifier
    std::optional<std::string> started; ///< start time, as the phone saw it; 1 to 20 digits

    /// Exactly three arguments, by the rules of `TargetRequest::parse`; besides, the identifier may
    /// hold no control character, and "-" for the start time is none.
    static std::optional<AppTarget> parse(std::span<const std::string> arguments);

    static constexpr auto fields =
        std::tuple{field("pid", &AppTarget::pid), field("appId", &AppTarget::appId),
                   field("started", &AppTarget::started)};
    bool operator==(const AppTarget&) const = default;
};

} // namespace velmo
