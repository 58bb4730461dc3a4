#include "core/probes/SecretRequest.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

void checkSecrets(Input input) {
    const ByteView given = input.restBytes();
    Bytes raw(given.begin(), given.end());
    const auto secret = SecretRequest::value(raw);
    require(std::ranges::all_of(raw, [](std::uint8_t byte) { return byte == 0; }));
    if (!secret)
        return;
    require(!secret->empty() && secret->size() <= SecretRequest::maxBytes);
    require(Text::isValidUtf8(*secret));
    require(std::ranges::none_of(bytesOf(*secret),
                                 [](std::uint8_t byte) { return byte < 0x20 || byte == 0x7F; }));
    const std::string_view ending = textOf(given).substr(secret->size());
    require(textOf(given).starts_with(*secret)
            && (ending.empty() || ending == "\n" || ending == "\r\n"));
}

const Target secretsTarget("Secrets", checkSecrets);

} // namespace

} // namespace velmo::Fuzz
