#pragma once

#include "core/support/Record.h"

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>

namespace velmo {

/// Reports which of the system's privacy permissions the host has. The report is shown while the
/// host is set up. The caller asks the system, and adds one entry to `automation` for each row of
/// `targets`.
struct SetupPermissionReport {
    /// Tells whether the host may send Apple events to an application.
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

    /// Interprets the status that `AEDeterminePermissionToAutomateTarget` returns. A status that is
    /// neither the grant nor one of the two refusals is `notRunning`: such a status does not tell
    /// what the user decided.
    static Automation automationForStatus(std::int32_t status);

    struct Arguments {
        bool ask = false; ///< the system may show its consent dialogs
        bool ok = false;  ///< false: wrong usage

        bool operator==(const Arguments&) const = default;
    };

    /// Reads the arguments, which are either none or "--ask-automation" alone.
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
