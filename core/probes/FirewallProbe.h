#pragma once

#include "core/support/Record.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What the system's application firewall says of the host. Whoever probes runs `tool` once for
/// each of the `invocations`, in order, and reports the cleaned outputs.
namespace velmo::FirewallProbe {

inline constexpr std::string_view tool = "/usr/libexec/ApplicationFirewall/socketfilterfw";

struct Report {
    std::string global;   ///< whether the firewall is on
    std::string blockAll; ///< whether it blocks everything
    std::string app;      ///< whether it blocks the application

    static constexpr auto fields =
        std::tuple{field("global", &Report::global), field("blockAll", &Report::blockAll),
                   field("app", &Report::app)};
    bool operator==(const Report&) const = default;
};

/// Absolute, at most 1024 user-perceived characters, without a step to the parent folder, an ASCII
/// control character or ill-formed UTF-8. Nothing else is asked of it: the tool is only told.
bool validAppPath(std::string_view path);

/// The application's path, which must be the only word after the program's own name; absent for
/// wrong usage.
std::optional<std::string> parseArgs(std::span<const std::string> arguments);

/// The arguments of each run. The path is an argument of its own: no shell ever sees it.
std::array<std::vector<std::string>, 3> invocations(std::string_view appPath);

/// An output without the white space and newlines around it, then cut to 400 user-perceived
/// characters. Ill-formed UTF-8 becomes U+FFFD.
std::string clean(std::string_view output);

} // namespace velmo::FirewallProbe
