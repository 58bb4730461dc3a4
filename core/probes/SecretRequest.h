#pragma once

#include "core/support/RawText.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velmo {

/// Asks for one of the host's own secrets to be read, set or deleted. The keychain keeps all
/// secrets under one service name, and each under an account name of its own.
struct SecretRequest {
    enum class Verb { get, set, delete_ };

    static constexpr std::string_view service = "io.velmo.host";
    static constexpr std::size_t maxBytes = 4096; ///< of a secret, without its line ending

    Verb verb = Verb::get;
    std::string account;

    /// Tells whether the name is 1 to 32 lower-case ASCII letters, digits and "-", beginning with a
    /// letter.
    static bool validAccount(std::string_view name);

    /// Reads exactly two arguments: the raw text of a verb, and an account. Absent for wrong usage.
    static std::optional<SecretRequest> parse(std::span<const std::string> arguments);

    /// Returns the secret in the raw bytes that were read, without the one LF or CR LF that may
    /// stand at its end. Absent unless it is 1 to `maxBytes` bytes of valid UTF-8 without ASCII
    /// control characters. Nothing else is removed, neither blanks nor a byte-order mark.
    ///
    /// In either case `raw` is overwritten with zeros, so that the returned text is the only copy.
    /// The secret must not appear in a log or an error text.
    static std::optional<std::string> value(std::span<std::uint8_t> raw);

    bool operator==(const SecretRequest&) const = default;
};

template<>
inline constexpr auto rawTexts<SecretRequest::Verb> =
    std::to_array<std::string_view>({"get", "set", "delete"});

} // namespace velmo
