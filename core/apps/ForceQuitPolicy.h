#pragma once

#include "core/support/BundleIdentifier.h"
#include "core/support/RawText.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Decides whether a process may be killed at the phone's request: never if its end would log the
/// user out, freeze the screen or stop the host, and never if it is not the process that the phone
/// saw.
namespace velmo::ForceQuitPolicy {

enum class Verdict {
    terminate,
    relaunch, ///< end the process in a way that starts it again
    refuse,
};
using enum Verdict;

inline constexpr std::string_view velmoBundlePrefix = BundleIdentifier::velmoPrefix;
inline constexpr std::string_view finderPath = "/System/Library/CoreServices/Finder.app";

// The tables are in lower case; letter case is ignored when a text is looked up in them.

inline constexpr auto relaunchBundleIds = std::to_array<std::string_view>({"com.apple.finder"});

inline constexpr auto protectedBundleIds = std::to_array<std::string_view>({
    "com.apple.loginwindow",
    "com.apple.windowserver",
    "com.apple.dock",
    "com.apple.systemuiserver",
    "com.apple.controlcenter",
    "com.apple.notificationcenterui",
    "com.apple.spotlight",
    "com.apple.windowmanager",
    "com.apple.securityagent",
    "com.apple.coreservices.uiagent",
    "com.apple.screensaver.engine",
    "com.apple.wifi.wifiagent",
    "com.apple.textinputmenuagent",
});

/// The file names of executables.
inline constexpr auto protectedNames = std::to_array<std::string_view>({
    "loginwindow",
    "windowserver",
    "dock",
    "systemuiserver",
    "controlcenter",
    "notificationcenter",
    "spotlight",
    "windowmanager",
    "securityagent",
    "launchd",
    "kernel_task",
});

inline constexpr auto systemPaths =
    std::to_array<std::string_view>({"/system/", "/usr/", "/bin/", "/sbin/"});

/// Tells whether the path lies below one of the system's own folders, `systemPaths`. Returns false
/// for an absent or relative path.
bool isSystemPath(std::optional<std::string_view> path);

/// The facts about the process that would be killed. An empty text counts as absent.
struct Process {
    std::int32_t pid = 0;
    std::optional<std::string> bundleId;
    std::optional<std::string> bundlePath;
    std::optional<std::string> executablePath;
};

/// Returns what to do with the process. The kernel, launchd, the host's own processes (`ownPids`),
/// the product's other applications and the protected parts of the system are refused. A protected
/// name counts only in a folder of the system, a protected identifier there and if no path is
/// known: an application elsewhere that uses one is terminated. The Finder at `finderPath` is
/// relaunched.
Verdict verdict(const Process& process, std::span<const std::int32_t> ownPids);

/// Tells whether the running application is the expected one. `expected` is compared with its
/// bundle identifier or, only if it has none, with its bundle path. Blanks around the texts and
/// letter case are ignored; an empty expectation matches nothing.
bool identityMatches(std::string_view expected, std::optional<std::string_view> bundleId,
                     std::optional<std::string_view> bundlePath);

/// Tells whether the process started at the expected time, ASCII digits with perhaps leading zeros.
/// Both times are in the unit that the host has chosen for the times that it sends to the phone. An
/// absent or empty expectation matches every process; any other matches only a process with a start
/// time above 0.
bool startMatches(std::optional<std::string_view> expected, std::optional<std::int64_t> actual);

} // namespace velmo::ForceQuitPolicy
