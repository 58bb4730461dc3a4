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
/// has an identifier and an argument vector; its response has the same identifier:
///
///     {"argv":["hotkey","[\"cmd\",\"k\"]"],"id":7}        {"code":0,"id":7}
///
/// | verb                      | arguments                                                       |
/// |---------------------------|-----------------------------------------------------------------|
/// | hotkey, key-down, key-up  | of `Hotkey::parseArguments`; the `KeyPhase` is tap, down, up    |
/// | type-text                 | a `TypeTextRequest`                                             |
/// | mouse-click               | a `MouseClickRequest`                                           |
/// | control                   | a `ControlCommand` that the daemon `serves`                     |
/// | release-all               | none, or a JSON array of key names, see `releaseKeys`           |
/// | ping                      | none                                                            |
namespace velmo::InputDaemonWire {

inline constexpr int protocolVersion = 1;
inline constexpr std::size_t maxLine = 65536; ///< bytes of a request

inline constexpr auto verbs = std::to_array<std::string_view>(
    {"hotkey", "key-down", "key-up", "type-text", "mouse-click", "control", "release-all", "ping"});

struct Request {
    std::int64_t id = 0; ///< 1...2^53-1

    /// The verb and its arguments; `parse` checks their number and sizes, not their content. Absent
    /// if the request is invalid but has an identifier: the daemon must respond to it with an
    /// error.
    std::optional<std::vector<std::string>> argv;

    static constexpr auto fields =
        std::tuple{field("id", &Request::id), field("argv", &Request::argv)};
    bool operator==(const Request&) const = default;
};

/// Reads a request line, a JSON object; absent if its identifier can't be read. A valid request has
/// no third member; its "argv" contains 1 to 4 texts of at most 16384 bytes each, and the first is
/// a verb.
std::optional<Request> parse(std::string_view line);

/// Returns the line of a request as the host writes it, or nothing if `parse` would not read it
/// back. The daemon judges whether the arguments suit the verb.
std::optional<std::string> request(std::int64_t id, std::vector<std::string> argv);

/// The line that the daemon writes once, before it reads requests.
struct Ready {
    int protocol = protocolVersion;
    std::vector<std::string> verbs;

    static constexpr auto fields =
        std::tuple{constant("type", "ready"), field("protocol", &Ready::protocol),
                   field("verbs", &Ready::verbs)};
    bool operator==(const Ready&) const = default;
};

/// Returns the `Ready` line of this daemon.
std::string ready();

/// Reads the daemon's first line. A protocol other than `protocolVersion` is accepted too, but the
/// host must not talk to such a daemon. Verbs and members that a newer daemon adds are accepted as
/// well.
std::optional<Ready> parseReady(std::string_view line);

struct Response {
    std::int64_t id = 0;   ///< of the request
    std::int32_t code = 0; ///< 0 for success
    std::optional<std::string> error;

    static constexpr auto fields =
        std::tuple{field("id", &Response::id), field("code", &Response::code),
                   field("error", &Response::error)};
    bool operator==(const Response&) const = default;
};

/// Reads the daemon's response to a request. Members that a newer daemon adds are ignored. A line
/// that is not a response, or that names no request, is refused.
std::optional<Response> parseResponse(std::string_view line);

/// Returns the response to a request. A code of 0 means success; the error text is then left out.
/// Otherwise it is cut after 2000 characters.
std::string response(std::int64_t id, std::int32_t code,
                     const std::optional<std::string>& error = std::nullopt);

/// Tells whether the input daemon performs the command. The daemon does not lock the Mac, put it to
/// sleep, shut it down or restart it.
bool serves(const ControlCommand& command);

/// Returns the keys that a release-all request names, in its order and in lower case, without those
/// that are not in `Hotkey::keys`. If no key remains, every pressed key is to be released, because
/// a key that stays down is worse than one released too early. Absent if the request is invalid,
/// which means that it has more than one argument, or one that is not a JSON array of at most 16
/// texts in 1024 bytes.
std::optional<std::vector<std::string>> releaseKeys(std::span<const std::string> argv);

/// Returns a record, or a map from text, as one line of JSON with sorted keys and plain slashes,
/// without a line feed; "{}" if it has no JSON form.
template<class T>
std::string line(const T& object) {
    return encodeJson(object, Slashes::plain).value_or("{}");
}

} // namespace velmo::InputDaemonWire
