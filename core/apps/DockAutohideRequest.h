#pragma once

#include "core/support/Record.h"

#include <optional>
#include <span>
#include <string>
#include <variant>

namespace velmo {

/// Asks whether the Dock hides itself, or has it do so or not.
struct DockAutohideRequest {
    struct Set {
        bool autohide = false;
        bool operator==(const Set&) const = default;
    };

    struct Get {
        bool operator==(const Get&) const = default;
    };

    std::variant<Set, Get> action;

    /// "get", "set" "1" or "set" "0", and nothing else.
    static std::optional<DockAutohideRequest> parse(std::span<const std::string> args);

    bool operator==(const DockAutohideRequest&) const = default;
};

struct DockAutohideReport {
    bool autohide = false;
    std::string method; ///< how it was read or set, for whoever looks for a fault

    static constexpr auto fields = std::tuple{field("autohide", &DockAutohideReport::autohide),
                                              field("method", &DockAutohideReport::method)};
    bool operator==(const DockAutohideReport&) const = default;
};

} // namespace velmo
