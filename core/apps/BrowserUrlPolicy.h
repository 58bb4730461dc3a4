#pragma once

#include "core/support/Record.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Decides how the phone learns which page the front browser shows: which browser is asked, with
/// which script, and how much of the result the phone may be told.
///
/// List the windows on screen from front to back, pick the browser with `front`, run its `script`
/// and hand the two texts that it returns to `report`. If the system refuses to run the script
/// because the user has not permitted it, send `Report::automation` instead.
namespace velmo::BrowserUrlPolicy {

/// A supported browser. The texts belong to the table below, or the caller keeps them alive.
struct Browser {
    std::string_view key;    ///< the short name that the phone knows
    std::string_view bundle; ///< bundle identifier
    bool scriptable = false; ///< understands the AppleScript of `script`

    bool operator==(const Browser&) const = default;
};

inline constexpr Browser browsers[] = {
    {.key = "chrome", .bundle = "com.google.Chrome", .scriptable = true},
    {.key = "edge", .bundle = "com.microsoft.edgemac", .scriptable = true},
    {.key = "brave", .bundle = "com.brave.Browser", .scriptable = true},
    {.key = "safari", .bundle = "com.apple.Safari", .scriptable = false},
};

struct Window {
    std::int64_t layer = 0;            ///< of the window server; 0 for ordinary windows
    std::optional<std::string> bundle; ///< bundle identifier of the owner

    bool operator==(const Window&) const = default;
};

inline constexpr std::size_t urlMax = 2048; ///< bytes of UTF-8

/// The record for the phone. A member that is unknown, or must not be told, is absent.
struct Report {
    std::optional<std::string> browser;    ///< `Browser::key`
    std::optional<bool> private_;          ///< whether the front window is a private one
    std::optional<std::string> url;        ///< address of the front tab
    std::optional<bool> none;              ///< true if the browser has no window, else absent
    std::optional<std::string> permission; ///< the permission that is missing
    std::optional<std::string> app;        ///< the application that the permission is about

    /// Returns the report of a browser without a window.
    static Report nothing();

    /// Returns the report that the user has not permitted the host to automate `app`.
    static Report automation(std::string_view app);

    static constexpr auto fields = std::tuple{field("browser", &Report::browser),
                                              field("private", &Report::private_),
                                              field("url", &Report::url),
                                              field("none", &Report::none),
                                              field("permission", &Report::permission),
                                              field("app", &Report::app)};
    bool operator==(const Report&) const = default;
};

/// Returns the row of the table with this bundle identifier, in any letter case.
std::optional<Browser> browser(std::optional<std::string_view> bundle);

/// Returns the browser with the frontmost window. Windows of other applications, and windows on
/// another layer than 0, are skipped even if they lie in front.
std::optional<Browser> front(std::span<const Window> windows);

/// Returns an AppleScript that asks the browser for the mode and the address of its front window
/// and returns a list of the two texts. Absent if the browser is not scriptable, or if its
/// identifier contains anything but ASCII letters, digits and dots: the script has the identifier
/// in a literal, which a quote would end.
std::optional<std::string> script(const Browser& browser);

/// Returns the report about the two texts that the script returned. Only a window of mode "normal"
/// has its address reported, and only if the address is valid UTF-8 of at most `urlMax` bytes,
/// begins with "http://" or "https://", and contains neither spaces nor control characters. User
/// names and passwords in the address are not removed. The mode "none" stands for a browser without
/// a window. With an unknown or absent mode, only the browser is reported.
Report report(const Browser& browser, std::optional<std::string_view> mode,
              std::optional<std::string_view> url);

} // namespace velmo::BrowserUrlPolicy
