#include "core/terminal/SshTarget.h"

#include "core/support/Ascii.h"
#include "core/support/Decimal.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace velmo {

namespace {

constexpr std::int64_t maxPort = 65535;
constexpr std::size_t maxSshTarget = 253; ///< bytes: the longest name of the DNS

struct Target {
    std::optional<std::string_view> user;
    std::string_view host;
};

Target split(std::string_view text) {
    const std::size_t at = text.find('@');
    if (at == std::string_view::npos)
        return {.user = std::nullopt, .host = text};
    return {.user = text.substr(0, at), .host = text.substr(at + 1)};
}

/// Tells whether the text may be a user, a host's name or an IPv4 address.
bool isName(std::string_view text) {
    return !text.empty() && Ascii::isMadeOfLettersDigitsAnd("-._", text);
}

bool isNameOrLiteral(std::string_view host) {
    if (!host.starts_with('['))
        return isName(host);
    if (host.size() < 3 || !host.ends_with(']'))
        return false;
    return std::ranges::all_of(host.substr(1, host.size() - 2),
                               [](char c) { return Ascii::isHex(c) || c == '.' || c == ':'; });
}

} // namespace

bool DevTerminal::isSshTarget(std::string_view text) {
    const Target target = split(text);
    return (!target.user || isName(*target.user)) && isName(target.host);
}

std::optional<int> DevTerminal::sshPort(std::string_view text) {
    return Decimal::parsePositive(text, maxPort).transform([](std::int64_t port) {
        return static_cast<int>(port);
    });
}

bool Pty::isSshTarget(std::string_view text) {
    const Target target = split(text);
    return text.size() <= maxSshTarget && !text.starts_with('-')
           && (!target.user || isName(*target.user)) && isNameOrLiteral(target.host);
}

} // namespace velmo
