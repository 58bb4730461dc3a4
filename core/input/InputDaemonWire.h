#pragma once

#include "core/output/ControlCommand.h"
#include "core/support/Record.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The lines between the host and its input daemon, the process that posts the events. A request
/// has an identifier and an argument vector; its answer bears the same identifier:
///
///     {"argv":["hotkey","[\"cmd\",\"k\"]"],"id":7}        {"code":0,"id":7}
///
/// | verb                      | arguments                                                       |
/// |---------------------------|-----------------------------------------------------------------|
/// | hotkey, key-down, key-up  | of `Hotkey::parseArguments`, for `KeyPhase` tap, down and up    |
/// | type-text                 | a `TypeTextRequest`                                             |
/// | mouse-click               | a `MouseClickRequest`                                           |
/// | control                   | a `ControlCommand`, one that `serves`                           |
/// | release-all               | none, or a JSON array of key names, see `releaseKeys`           |
/// | ping                      | none                                                            |
namespace velmo::InputDaemonWire {

inline constexpr int protocolVersion = 1;
inline constexpr std::size_t maxLine = 65536; ///< bytes of a request

inline constexpr auto verbs = std::to_array<std::string_view>(
    {"hotkey", "key-down", "key-up", "type-text", "mouse-click", "control", "release-all", "ping"});

struct Request {
    std::int64_t id = 0; ///< 1...2^53-1

    /// The verb and its arguments, which are not checked here. Absent for a request that is
    /// invalid but has an identifier, so that it is owed an answer: one that tells of an error.
    std::optional<std::vector<std::string>> argv;

    static constexpr auto fields =
        std::tuple{field("id", &Request::id), field("argv", &Request::argv)};
    bool operator==(const Request&) const = default;
};

/// Absent when not even an identifier can be read, an integer in a JSON object. A valid request has
/// no third member, and 1 to 4 arguments of at most 16384 bytes each, the verb first.
std::optional<Request> parse(std::string_view line);

/// What the daemon writes once, before it serves.
std::string ready();

/// The answer to a request; a code of 0 means success and leaves no error text. The text is cut
/// after 2000 characters.
std::string response(std::int64_t id, std::int32_t code,
                     const std::optional<std::string>& error = std::nullopt);

/// Whether the input daemon performs the command: not locking, sleeping, shutting down, restarting.
bool serves(const ControlCommand& command);

/// The keys that a release-all request names, in lower case, in order, without those that are not
/// in `Hotkey::keys`. None, whatever the reason, means everything that is held: a key that stays
/// down is worse than one let go too early. Absent when the request is invalid: more than one
/// argument, or one that is no JSON array of at most 16 texts in 1024 bytes.
std::optional<std::vector<std::string>> releaseKeys(std::span<const std::string> argv);

/// A record, or a map by text, as one JSON line with sorted keys, slashes plain, without a line
/// feed; "{}" when it has no JSON form.
template<class T>
std::string line(const T& object) {
    return encodeJson(object, Slashes::plain).value_or("{}");
}

} // namespace velmo::InputDaemonWire
