#include "core/apps/TargetRequest.h"

#include "core/support/Args.h"
#include "core/support/Ascii.h"
#include "core/support/Text.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace velmo {

namespace {

constexpr std::size_t maxIdentity = 1024; ///< user-perceived characters
constexpr std::size_t maxStart = 20;      ///< digits

bool isIdentity(std::string_view text) {
    return !text.empty() && Text::isValidUtf8(text)
           && !Text::hasMoreCharactersThan(text, maxIdentity)
           && !Text::hasAny(text, Text::isNewline);
}

bool isStart(std::string_view text) {
    return !text.empty() && text.size() <= maxStart && std::ranges::all_of(text, Ascii::isDigit);
}

} // namespace

std::optional<TargetRequest> TargetRequest::parse(std::span<const std::string> arguments) {
    if (arguments.size() < 2 || arguments.size() > 3)
        return std::nullopt;
    const auto pid = Args::pid(arguments[0]);
    const std::string_view appId = Text::trimmed(arguments[1], Text::isBlank);
    const auto started = arguments.size() == 3 ? std::optional(arguments[2]) : std::nullopt;
    if (!pid || !isIdentity(appId) || (started && !isStart(*started)))
        return std::nullopt;
    return TargetRequest{.pid = *pid, .appId = std::string(appId), .started = started};
}

} // namespace velmo
