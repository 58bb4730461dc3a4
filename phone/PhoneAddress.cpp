#include "phone/PhoneAddress.h"

#include "core/support/Ascii.h"
#include "core/support/Decimal.h"
#include "core/support/Text.h"
#include "core/support/Uri.h"

#include <algorithm>
#include <array>

namespace velmo {

namespace {

struct Scheme {
    std::string_view name;
    std::string_view prefix;
    std::string_view port; ///< that a browser leaves out
};

constexpr auto schemes =
    std::to_array<Scheme>({{.name = "http", .prefix = "http://", .port = ":80"},
                           {.name = "https", .prefix = "https://", .port = ":443"}});

constexpr auto loopbackHosts = std::to_array<std::string_view>({"127.0.0.1", "localhost", "[::1]"});

bool isSame(std::string_view header, std::string_view text) {
    return std::ranges::equal(header, text, {}, Ascii::lowercased);
}

/// Tells whether the host is a name or an address that a "Host" header can have. The parser has
/// taken the brackets off an IPv6 address.
bool isPlainHost(std::string_view host) {
    return !host.empty() && host.size() <= 253 && Ascii::isMadeOfLettersDigitsAnd("-.:", host);
}

} // namespace

std::optional<std::string> PhoneAddress::outsideOrigin(std::string_view url) {
    const auto uri = Uri::parse(url);
    if (!uri || uri->userInfo || uri->query || uri->fragment || !isPlainHost(uri->host)
        || (!uri->path.empty() && uri->path != "/"))
        return std::nullopt;
    const auto* const scheme = std::ranges::find_if(
        schemes, [&](const Scheme& each) { return isSame(uri->scheme, each.name); });
    if (scheme == schemes.end())
        return std::nullopt;
    const std::string host = Text::lowercased(uri->host);
    std::string origin(scheme->prefix);
    origin += host.contains(':') ? "[" + host + "]" : host;
    if (!uri->port || uri->port->empty())
        return origin;
    const auto port = Decimal::parsePositive(*uri->port, UINT16_MAX);
    if (!port)
        return std::nullopt;
    const std::string suffix = ":" + std::to_string(*port);
    return suffix == scheme->port ? origin : origin + suffix;
}

PhoneAddress::PhoneAddress(std::uint16_t port, std::optional<std::string> outside)
    : port_(port), outside_(std::move(outside)) {
}

bool PhoneAddress::isHost(std::string_view header) const {
    const auto isLoopback = [&](std::string_view host) {
        return isSame(header, std::string(host) + ":" + std::to_string(port_));
    };
    if (std::ranges::any_of(loopbackHosts, isLoopback))
        return true;
    // Some proxies write the port that browsers leave out.
    return outside_ && std::ranges::any_of(schemes, [&](const Scheme& scheme) {
               if (!outside_->starts_with(scheme.prefix))
                   return false;
               const std::string host = outside_->substr(scheme.prefix.size());
               return isSame(header, host) || isSame(header, host + std::string(scheme.port));
           });
}

bool PhoneAddress::isOrigin(std::string_view header) const {
    constexpr std::string_view plain = "http://";
    if (outside_ && header == *outside_)
        return true;
    return header.starts_with(plain)
           && std::ranges::any_of(loopbackHosts, [&](std::string_view host) {
                  return header.substr(plain.size())
                         == std::string(host) + ":" + std::to_string(port_);
              });
}

bool PhoneAddress::isEncrypted() const {
    return outside_ && outside_->starts_with("https:");
}

std::string PhoneAddress::page() const {
    return outside_.value_or("http://127.0.0.1:" + std::to_string(port_)) + "/";
}

} // namespace velmo
