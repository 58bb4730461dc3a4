#pragma once

#include "core/support/Record.h"

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>

namespace velmo {

/// Which of the system's privacy permissions the host has; shown while it is being set up. Whoever
/// asks the system fills it, with one entry of `automation` for each row of `targets`.
struct SetupPermissionReport {
    /// Whether one application may be sent Apple events.
    enum class Automation { granted, denied, notAsked, notRunning };

    struct Target {
        std::string_view key; ///< of its entry in `automation`
        std::string_view bundleIdentifier;

        bool operator==(const Target&) const = default;
    };

    /// The applications that the host drives by Apple events.
    static constexpr auto targets =
        std::to_array<Target>({{.key = "music", .bundleIdentifier = "com.apple.Music"},
                               {.key = "spotify", .bundleIdentifier = "com.spotify.client"},
                               {.key = "finder", .bundleIdentifier = "com.apple.finder"},
                               {.key = "chrome", .bundleIdentifier = "com.google.Chrome"},
                               {.key = "edge", .bundleIdentifier = "com.microsoft.edgemac"},
                               {.key = "brave", .bundleIdentifier = "com.brave.Browser"}});

    bool accessibility = false;
    bool screenRecording = false;
    std::map<std::string, Automation> automation;

    /// Of the status that `AEDeterminePermissionToAutomateTarget` returns. What is neither a grant
    /// nor one of its two refusals says nothing of the user's will: the target can't be asked now.
    static Automation automationForStatus(std::int32_t status);

    struct Arguments {
        bool ask = false; ///< the system may show its consent dialogs
        bool ok = false;  ///< false: wrong usage

        bool operator==(const Arguments&) const = default;
    };

    /// Of the words after the program's own name: none, or "--ask-automation" alone.
    static Arguments parseArgs(std::span<const std::string> arguments);

    static constexpr auto fields =
        std::tuple{field("accessibility", &SetupPermissionReport::accessibility),
                   field("screenRecording", &SetupPermissionReport::screenRecording),
                   field("automation", &SetupPermissionReport::automation)};
    bool operator==(const SetupPermissionReport&) const = default;
};

template<>
inline constexpr auto rawTexts<SetupPermissionReport::Automation> =
    std::to_array<std::string_view>({"granted", "denied", "not-asked", "not-running"});

} // namespace velmo
