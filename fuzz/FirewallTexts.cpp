#include "core/probes/FirewallProbe.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

void checkFirewallTexts(Input input) {
    const std::string_view output = input.rest();
    const std::string clean = FirewallProbe::clean(output);
    require(Text::isValidUtf8(clean) && !Text::hasMoreCharactersThan(clean, 400));
    require(clean.empty() || !Text::isBlankOrNewline(Text::firstScalar(clean).value));
    require(Text::repaired(output).contains(clean));
    require(FirewallProbe::clean(" \n" + std::string(output)) == clean);
}

const Target firewallTextsTarget("FirewallTexts", checkFirewallTexts);

} // namespace

} // namespace velmo::Fuzz
