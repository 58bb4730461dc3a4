#pragma once

#include "core/support/Record.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Finds out whether the system's application firewall would block the host. The caller runs `tool`
/// once for each of the `invocations`, in order, and fills the report with the cleaned outputs.
namespace velmo::FirewallProbe {

inline constexpr std::string_view tool = "/usr/libexec/ApplicationFirewall/socketfilterfw";

/// What the tool printed in each of its runs, cleaned.
struct Report {
    std::string global;   ///< whether the firewall is on
    std::string blockAll; ///< whether it blocks everything
    std::string app;      ///< whether it blocks the application

    static constexpr auto fields =
        std::tuple{field("global", &Report::global), field("blockAll", &Report::blockAll),
                   field("app", &Report::app)};
    bool operator==(const Report&) const = default;
};

/// Tells whether the path is absolute, has at most 1024 user-perceived characters of valid UTF-8,
/// and contains neither a step to the parent folder ("..") nor an ASCII control character. The path
/// need not exist.
bool validAppPath(std::string_view path);

/// Returns the path of the application, which must be the only argument; absent for wrong usage.
std::optional<std::string> parseArgs(std::span<const std::string> arguments);

/// Returns the arguments of each run. The path is an argument of its own and never passes through a
/// shell, so that it needs no quoting.
std::array<std::vector<std::string>, 3> invocations(std::string_view appPath);

/// Removes the white space and line breaks around an output and then cuts it to 400 user-perceived
/// characters. Ill-formed UTF-8 becomes U+FFFD.
std::string clean(std::string_view output);

} // namespace velmo::FirewallProbe
