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

    /// Returns the text by which the phone names the start of a process in its requests: the digits
    /// of a time above 0, else "-". `parse` reads it back. It goes into `WindowRecord::started`.
    ///
    /// A start time is only ever compared with itself, by `ForceQuitPolicy::startMatches`, so that
    /// its unit is the host's to choose, once for all: microseconds since 1970, as the system's
    /// process list has it, tell apart what whole seconds might not.
    static std::string startedText(std::optional<std::int64_t> startTime);

    static constexpr auto fields = targetFields<AppTarget>();
    bool operator==(const AppTarget&) const = default;
};

} // namespace velmo
