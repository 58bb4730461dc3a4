#include "fuzz/Fuzz.h"
#include "platform/simulated/SimulatedMac.h"

namespace velmo {

void Fuzz::target(Input input) {
    const std::string_view json = input.rest();
    const auto decode = [](std::string_view text) { return decodeRecord<SimulatedMac>(text); };
    requireSpellingIsIgnored(json, decode);
    if (const auto mac = decode(json))
        require(decode(encodeJson(*mac).value()) == mac);
}

} // namespace velmo
