#include "core/input/InputDaemonWire.h"

#include "core/input/Hotkey.h"
#include "core/support/Text.h"

#include <algorithm>
#include <utility>

namespace velmo::InputDaemonWire {

namespace {

constexpr std::int64_t maxId = (std::int64_t{1} << 53) - 1; // every JSON reader reads it exactly
constexpr std::size_t maxArguments = 4;                     // the verb is one of them
constexpr std::size_t maxArgument = 16384;                  // bytes
constexpr std::size_t maxReleaseArgument = 1024;            // bytes
constexpr std::size_t maxReleasedKeys = 16;
constexpr std::size_t maxError = 2000; // characters

constexpr bool isId(std::optional<std::int64_t> id) {
    return id >= 1 && id <= maxId;
}

bool isValid(const std::vector<std::string>& argv) {
    return !argv.empty() && argv.size() <= maxArguments && Text::isOneOf(argv.front(), verbs)
           && std::ranges::all_of(
               argv, [](const std::string& argument) { return argument.size() <= maxArgument; });
}

} // namespace

std::optional<Request> parse(std::string_view line) {
    if (line.size() > maxLine)
        return std::nullopt;
    const auto document = JsonDocument::parse(line);
    const auto object = document.and_then(&JsonDocument::object);
    const auto id = object ? object->integer("id") : std::nullopt;
    if (!isId(id))
        return std::nullopt;

    auto request = decodeRecordExactly<Request>(*object);
    if (request && request->argv && isValid(*request->argv))
        return request;
    return Request{.id = *id, .argv = {}};
}

std::optional<std::string> request(std::int64_t id, std::vector<std::string> argv) {
    const Request made{.id = id, .argv = std::move(argv)};
    std::string text = line(made);
    return parse(text) == made ? std::optional(std::move(text)) : std::nullopt;
}

std::string ready() {
    return line(Ready{.verbs = {verbs.begin(), verbs.end()}});
}

std::optional<Ready> parseReady(std::string_view line) {
    const auto document = JsonDocument::parse(line);
    const auto object = document.and_then(&JsonDocument::object);
    if (!object || object->text("type") != "ready")
        return std::nullopt;
    return decodeRecord<Ready>(*object);
}

std::optional<Response> parseResponse(std::string_view line) {
    auto response = decodeRecord<Response>(line);
    return response && isId(response->id) ? response : std::nullopt;
}

std::string response(std::int64_t id, std::int32_t code, const std::optional<std::string>& error) {
    const bool tellsError = error && code != 0;
    return line(Response{.id = id,
                         .code = code,
                         .error = tellsError
                                      ? std::optional<std::string>(Text::prefix(*error, maxError))
                                      : std::nullopt});
}

bool serves(const ControlCommand& command) {
    using enum ControlCommand::Kind;
    switch (command.kind) {
    case lock:
    case sleep:
    case shutdown:
    case restart:
        return false;
    default:
        return true;
    }
}

std::optional<std::vector<std::string>> releaseKeys(std::span<const std::string> argv) {
    if (argv.size() > 2)
        return std::nullopt;
    if (argv.size() < 2)
        return std::vector<std::string>();
    if (argv[1].size() > maxReleaseArgument)
        return std::nullopt;
    const auto names = decodeJsonText<std::vector<std::string>>(argv[1]);
    if (!names || names->size() > maxReleasedKeys)
        return std::nullopt;
    std::vector<std::string> keys;
    for (const std::string& name : *names) {
        std::string key = Text::lowercased(name);
        if (hasKey(Hotkey::keys, key))
            keys.push_back(std::move(key));
    }
    return keys;
}

} // namespace velmo::InputDaemonWire
