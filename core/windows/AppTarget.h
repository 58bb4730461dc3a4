#pragma once

#include "core/apps/TargetRequest.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// Names the application that has the window to be arranged. The members mean what those of
/// `TargetRequest` mean.
struct AppTarget {
    std::int32_t pid = 0;
    std::string appId;
    std::optional<std::string> started;

    /// Reads three arguments by the rules of `TargetRequest::parse`, except that "-" stands for an
    /// absent start time. Returns nothing for any other number of arguments, and for an identifier
    /// that contains an ASCII control character.
    static std::optional<AppTarget> parse(std::span<const std::string> arguments);

    /// Returns the text for `WindowRecord::started`, by which the phone names the start of a
    /// process in its requests: the digits of a time above 0, else "-". `parse` reads the text
    /// back.
    ///
    /// A start time is only ever compared with itself, by `ForceQuitPolicy::startMatches`, so that
    /// the host may choose the unit, once for all. Microseconds since 1970, as in the system's
    /// process list, distinguish processes that started within the same second.
    static std::string startedText(std::optional<std::int64_t> startTime);

    static constexpr auto fields = targetFields<AppTarget>();
    bool operator==(const AppTarget&) const = default;
};

} // namespace velmo
