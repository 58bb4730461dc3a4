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

/// The running application that the phone means. A process identifier alone is not enough: by the
/// time that the request arrives it may be another process's.
struct TargetRequest {
    std::int32_t pid = 0;
    std::string appId;                  ///< bundle identifier or bundle path
    std::optional<std::string> started; ///< start time, as the phone saw it; 1 to 20 digits

    /// The process identifier (`Args::pid`), the identity, and perhaps the start time. The
    /// identity is taken without the blanks around it and must then be 1 to 1024 user-perceived
    /// characters of valid UTF-8 without a line break.
    static std::optional<TargetRequest> parse(std::span<const std::string> arguments);

    static constexpr auto fields = targetFields<TargetRequest>();
    bool operator==(const TargetRequest&) const = default;
};

} // namespace velmo
