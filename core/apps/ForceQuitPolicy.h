#pragma once

#include "core/support/BundleIdentifier.h"
#include "core/support/RawText.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Which processes may be killed at the phone's request: none whose end logs the user out, freezes
/// the screen or takes the host away, and none but the one that the phone saw.
namespace velmo::ForceQuitPolicy {

enum class Verdict { terminate, relaunch, refuse };
using enum Verdict;

inline constexpr std::string_view velmoBundlePrefix = BundleIdentifier::velmoPrefix;
inline constexpr std::string_view finderPath = "/System/Library/CoreServices/Finder.app";

// The tables are in lower case: identifiers and paths are compared in any.

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

/// Names of executables.
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

/// Whether the path lies below one of the system's own folders.
bool isSystemPath(std::optional<std::string_view> path);

/// What was found out about the process that would be ended. An empty text counts as absent.
struct Process {
    std::int32_t pid = 0;
    std::optional<std::string> bundleId;
    std::optional<std::string> bundlePath;
    std::optional<std::string> executablePath;
};

/// Refused are the kernel and launchd, the host's own processes (`ownPids`), the product's other
/// applications, and what the system needs, as long as it is the system's: an application that
/// merely borrows such an identifier is ended. The Finder is ended in a way that brings it back.
Verdict verdict(const Process& process, std::span<const std::int32_t> ownPids);

/// Whether the running application is the one that is expected by its bundle identifier or, only
/// if it has none, by its bundle path. Blanks around the texts and letter case do not count;
/// nothing matches an empty expectation.
bool identityMatches(std::string_view expected, std::optional<std::string_view> bundleId,
                     std::optional<std::string_view> bundlePath);

/// Whether the process started when it is expected to have: a decimal number, leading zeros let
/// pass. Without an expectation, or with an empty one, every process matches; with one, no process
/// whose start time is unknown or not above 0.
bool startMatches(std::optional<std::string_view> expected, std::optional<std::int64_t> actual);

} // namespace velmo::ForceQuitPolicy
