#pragma once

#include "core/apps/TargetRequest.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// Names the application whose window is to be arranged. The members mean what those of
/// `TargetRequest` mean.
struct AppTarget {
    std::int32_t pid = 0;
    std::string appId;
    std::optional<std::string> started;

    /// Reads three arguments by the rules of `TargetRequest::parse`, except that "-" stands for an
    /// absent start time. Returns nothing for any other number of arguments, and for an identifier
    /// that contains an ASCII control character.
    static std::optional<AppTarget> parse(std::span<const std::string> arguments);

    static constexpr auto fields = targetFields<AppTarget>();
    bool operator==(const AppTarget&) const = default;
};

} // namespace velmo
