#include "core/input/WebURL.h"
#include "fuzz/Fuzz.h"
#include "lab/instruments/UriPeer.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

void checkWebAddresses(Input input) {
    const std::string text(input.rest());
    // For the peer, a NUL ends the text.
    require(text.contains('\0') || agreesWithAPeer(text));
    const auto url = WebURL::parse(text);
    if (url) {
        const auto uri = Uri::parse(text);
        require(url->text == text && text.size() <= 2048);
        require(uri && !uri->host.empty() && !uri->userInfo);
        require(std::ranges::all_of(text, [](char c) { return c > 0x20 && c < 0x7F; }));
    }
    require(!url || !WebURL::isBundleId(text));
}

const Target webAddressesTarget("WebAddresses", checkWebAddresses);

} // namespace

} // namespace velmo::Fuzz
