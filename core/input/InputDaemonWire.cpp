#include "core/input/InputDaemonWire.h"

#include "core/input/Hotkey.h"
#include "core/support/Text.h"

#include <algorithm>
#include <utility>

namespace velmo::InputDaemonWire {

namespace {

constexpr std::int64_t idLimit = std::int64_t{1} << 53; // what every JSON reader holds exactly
constexpr std::size_t mostArguments = 4;
constexpr std::size_t longestArgument = 16384;       // bytes
constexpr std::size_t longestReleaseArgument = 1024; // bytes
constexpr std::size_t mostReleasedKeys = 16;
constexpr std::size_t longestError = 2000; // characters

struct Ready {
    int protocol = protocolVersion;
    std::span<const std::string_view> known = verbs;

    static constexpr auto fields =
        std::tuple{constant("type", "ready"), field("protocol", &Ready::protocol),
                   field("verbs", &Ready::known)};
};

struct Response {
    std::int64_t id = 0;
    std::int32_t code = 0;
    std::optional<std::string_view> error;

    static constexpr auto fields =
        std::tuple{field("id", &Response::id), field("code", &Response::code),
                   field("error", &Response::error)};
};

bool isValid(const std::vector<std::string>& argv) {
    return !argv.empty() && argv.size() <= mostArguments && Text::isOneOf(argv.front(), verbs)
           && std::ranges::all_of(argv, [](const std::string& argument) {
                  return argument.size() <= longestArgument;
              });
}

} // namespace

std::optional<Request> parse(std::string_view line) {
    if (line.size() > maxLine)
        return std::nullopt;
    const auto document = JsonDocument::parse(line);
    const auto object = document.and_then(&JsonDocument::object);
    const auto id = object ? object->integer("id") : std::nullopt;
    if (!id || *id < 1 || *id >= idLimit)
        return std::nullopt;

    auto request = decodeRecordExactly<Request>(*object);
    if (request && request->argv && isValid(*request->argv))
        return request;
    return Request{.id = *id, .argv = {}};
}

std::string ready() {
    return line(Ready());
}

std::string response(std::int64_t id, std::int32_t code, const std::optional<std::string>& error) {
    Response answer{.id = id, .code = code, .error = {}};
    if (error && code != 0)
        answer.error = Text::prefix(*error, longestError);
    return line(answer);
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
    if (argv[1].size() > longestReleaseArgument)
        return std::nullopt;
    const auto names = decodeJsonText<std::vector<std::string>>(argv[1]);
    if (!names || names->size() > mostReleasedKeys)
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
