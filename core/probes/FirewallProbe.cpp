#include "core/probes/FirewallProbe.h"

#include "core/support/Ascii.h"
#include "core/support/PathText.h"
#include "core/support/Text.h"

#include <algorithm>
#include <cstddef>

namespace velmo::FirewallProbe {

namespace {

constexpr std::size_t maxPath = 1024;  ///< user-perceived characters
constexpr std::size_t maxOutput = 400; ///< user-perceived characters

} // namespace

bool validAppPath(std::string_view path) {
    return path.starts_with('/') && !PathText::goesUp(path)
           && std::ranges::none_of(path, Ascii::isControl) && Text::isValidUtf8(path)
           && !Text::hasMoreCharactersThan(path, maxPath);
}

std::optional<std::string> parseArgs(std::span<const std::string> arguments) {
    if (arguments.size() != 1 || !validAppPath(arguments.front()))
        return std::nullopt;
    return arguments.front();
}

std::array<std::vector<std::string>, 3> invocations(std::string_view appPath) {
    return {{{"--getglobalstate"}, {"--getblockall"}, {"--getappblocked", std::string(appPath)}}};
}

std::string clean(std::string_view output) {
    // The output is repaired first, because the cut must not divide an ill-formed sequence into two
    // characters.
    const std::string valid = Text::repaired(output);
    return std::string(Text::prefix(Text::trimmed(valid, Text::isBlankOrNewline), maxOutput));
}

} // namespace velmo::FirewallProbe
