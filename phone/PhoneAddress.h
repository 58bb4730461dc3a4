#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Where the page is reached: at a port of the loopback addresses, and perhaps at an address from
/// outside, which something else leads to that port (a private network, a reverse proxy). Any other
/// "Host" or "Origin" means that a foreign page speaks, or that a foreign name leads here.
class PhoneAddress {
public:
    /// Reads an address from outside: http or https, a name or IP address, and perhaps a port, but
    /// no path, no query and no user. Returns the address as browsers spell an origin, in lower
    /// case and without the scheme's own port; absent for any other text.
    static std::optional<std::string> outsideOrigin(std::string_view url);

    /// `outside` is what `outsideOrigin` has returned.
    PhoneAddress(std::uint16_t port, std::optional<std::string> outside);

    /// Tells whether a request may have this "Host" header.
    [[nodiscard]] bool isHost(std::string_view header) const;

    /// Tells whether a request may have this "Origin" header.
    [[nodiscard]] bool isOrigin(std::string_view header) const;

    /// Tells whether the way from outside is encrypted, so that cookies may be kept to such ways.
    [[nodiscard]] bool isEncrypted() const;

    /// Returns the page's address for people, with a slash at its end: the one from outside if
    /// there is one.
    [[nodiscard]] std::string page() const;

private:
    std::uint16_t port_;
    std::optional<std::string> outside_;
};

} // namespace velmo
