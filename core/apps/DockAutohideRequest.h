#pragma once

#include "core/support/Record.h"

#include <optional>
#include <span>
#include <string>
#include <variant>

namespace velmo {

/// Asks whether the Dock hides itself, or switches that on or off.
struct DockAutohideRequest {
    struct Set {
        bool autohide = false;
        bool operator==(const Set&) const = default;
    };

    struct Get {
        bool operator==(const Get&) const = default;
    };

    std::variant<Set, Get> action;

    /// Reads the words after the program's own name: "get" alone, or "set" and "0" or "1".
    static std::optional<DockAutohideRequest> parse(std::span<const std::string> args);

    bool operator==(const DockAutohideRequest&) const = default;
};

/// Tells the phone whether the Dock hides itself, after a request was carried out.
struct DockAutohideReport {
    bool autohide = false;
    std::string method; ///< how the caller read or set it, for finding faults

    static constexpr auto fields = std::tuple{field("autohide", &DockAutohideReport::autohide),
                                              field("method", &DockAutohideReport::method)};
    bool operator==(const DockAutohideReport&) const = default;
};

} // namespace velmo
