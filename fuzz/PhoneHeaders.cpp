#include "fuzz/Fuzz.h"
#include "phone/CookieHeader.h"
#include "phone/PhoneAddress.h"

namespace velmo::Fuzz {

namespace {

/// The input is an address from outside, a "Host", an "Origin" and a "Cookie" header, a line each.
/// Whatever is accepted is spelt by one of the two addresses.
void checkPhoneHeaders(Input input) {
    const auto outside = PhoneAddress::outsideOrigin(input.line());
    require(!outside || PhoneAddress::outsideOrigin(*outside) == outside);
    const PhoneAddress address(4711, outside);
    require(address.isOrigin(outside.value_or("http://127.0.0.1:4711")));
    require(address.isEncrypted() == address.page().starts_with("https://"));

    const std::string_view host = input.line();
    const std::string_view origin = input.line();
    require(!address.isHost(host) || host.ends_with(":4711") || outside);
    require(!address.isOrigin(origin) || origin == outside || origin.ends_with(":4711"));
    require(!address.isHost("evil.example") || outside);
    if (outside && address.isHost(host) && !host.ends_with(":4711"))
        require(outside->find("://") + 3 + host.size() + 4 >= outside->size());

    const std::string_view header = input.line();
    const auto cookie = cookieIn(header, "velmo-phone");
    require(!cookie || header.contains("velmo-phone=" + std::string(*cookie)));
    require(!cookie || !cookie->contains(';'));
    require(cookieIn("velmo-phone=1", "velmo-phone") == "1");
}

const Target phoneHeadersTarget("PhoneHeaders", checkPhoneHeaders);

} // namespace

} // namespace velmo::Fuzz
