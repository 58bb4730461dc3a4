#pragma once

#include "core/support/Record.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace velmo {

/// Returns the fields of a record that names a running application as `TargetRequest` does, by
/// three members of the same names and types.
template<class R>
constexpr auto targetFields() {
    return std::tuple{field("pid", &R::pid), field("appId", &R::appId),
                      field("started", &R::started)};
}

/// Names the running application that the phone means. The process identifier alone is not enough:
/// when the request arrives, another process may have it.
struct TargetRequest {
    std::int32_t pid = 0;
    std::string appId; ///< bundle identifier or bundle path
    /// The start time that the phone saw, 1 to 20 digits in the host's own unit; a request without
    /// one leaves the argument out, and means any process of that number and identity.
    std::optional<std::string> started;

    /// Reads two or three arguments: the process identifier (`Args::pid`), the identity, and
    /// perhaps the start time. Blanks around the identity are dropped; what remains must be 1 to
    /// 1024 user-perceived characters of valid UTF-8 without a line break.
    static std::optional<TargetRequest> parse(std::span<const std::string> arguments);

    static constexpr auto fields = targetFields<TargetRequest>();
    bool operator==(const TargetRequest&) const = default;
};

} // namespace velmo
