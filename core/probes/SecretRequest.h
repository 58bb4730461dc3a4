#pragma once

#include "core/support/RawText.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velmo {

/// What is to be done with one of the host's own secrets, which the keychain keeps under one
/// service name, each by an account name.
struct SecretRequest {
    enum class Verb { get, set, delete_ };

    static constexpr std::string_view service = "io.velmo.host";
    static constexpr std::size_t maxBytes = 4096; ///< of a secret, without its line ending

    Verb verb = Verb::get;
    std::string account;

    /// 1 to 32 small ASCII letters, digits and "-", a letter first.
    static bool validAccount(std::string_view name);

    /// Reads the words after the program's own name: the verb, exactly as it is written, and the
    /// account. Absent for wrong usage.
    static std::optional<SecretRequest> parse(std::span<const std::string> arguments);

    /// The secret in what was read from the caller: valid UTF-8 without ASCII control characters,
    /// not empty, of at most `maxBytes`, before one LF or CR LF that is dropped. All else stays as
    /// it is, blanks and a byte-order mark too. Absent when refused.
    ///
    /// In either case `raw` is zeros afterwards, so that the text that is returned is the only
    /// copy; it belongs in no log and no error text.
    static std::optional<std::string> value(std::span<std::uint8_t> raw);

    bool operator==(const SecretRequest&) const = default;
};

template<>
inline constexpr auto rawTexts<SecretRequest::Verb> =
    std::to_array<std::string_view>({"get", "set", "delete"});

} // namespace velmo
