#pragma once

#include "core/support/Record.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Which page the front browser shows: whom to ask, with which script, and what of the answer may
/// be told.
namespace velmo::BrowserUrlPolicy {

/// Views of constants: the rows of the table, or what a caller keeps alive.
struct Browser {
    std::string_view key;    ///< by which it is told
    std::string_view bundle; ///< bundle identifier
    bool scriptable = false;

    bool operator==(const Browser&) const = default;
};

inline constexpr Browser browsers[] = {
    {.key = "chrome", .bundle = "com.google.Chrome", .scriptable = true},
    {.key = "edge", .bundle = "com.microsoft.edgemac", .scriptable = true},
    {.key = "brave", .bundle = "com.brave.Browser", .scriptable = true},
    {.key = "safari", .bundle = "com.apple.Safari", .scriptable = false},
};

struct Window {
    std::int64_t layer = 0;            ///< of the window server; 0 is where applications' are
    std::optional<std::string> bundle; ///< bundle identifier of the owner

    bool operator==(const Window&) const = default;
};

inline constexpr std::size_t urlMax = 2048; ///< bytes of UTF-8

struct Report {
    std::optional<std::string> browser; ///< its key
    std::optional<bool> private_;       ///< whether the front window is
    std::optional<std::string> url;     ///< the front tab's
    std::optional<bool> none;           ///< true: the browser has no window
    std::optional<std::string> permission;
    std::optional<std::string> app; ///< whom the permission concerns

    /// There is no window.
    static Report nothing();

    /// The system refused the script for lack of the permission to automate `app`.
    static Report automation(std::string_view app);

    static constexpr auto fields = std::tuple{field("browser", &Report::browser),
                                              field("private", &Report::private_),
                                              field("url", &Report::url),
                                              field("none", &Report::none),
                                              field("permission", &Report::permission),
                                              field("app", &Report::app)};
    bool operator==(const Report&) const = default;
};

/// The row for a bundle identifier in whatever case.
std::optional<Browser> browser(std::optional<std::string_view> bundle);

/// The browser of the first window, front to back, that is on layer 0 and belongs to one, whatever
/// other applications' windows lie before it.
std::optional<Browser> front(std::span<const Window> windows);

/// AppleScript that returns a list of two texts for `report`, mode and address. Absent when the
/// browser is not scriptable, or its identifier is not made of ASCII letters, digits and points
/// and could end the literal that it stands in.
std::optional<std::string> script(const Browser& browser);

/// Only the mode "normal" tells an address: at most `urlMax` bytes, beginning with "http://" or
/// "https://", without blanks and control characters; any other is left out. It is told with all
/// that stands in it, user names and passwords too.
Report report(const Browser& browser, std::optional<std::string_view> mode,
              std::optional<std::string_view> url);

} // namespace velmo::BrowserUrlPolicy
