#include "fuzz/Fuzz.h"
#include "platform/simulated/RecordFault.h"
#include "platform/simulated/SimulatedMac.h"

namespace velmo::Fuzz {

namespace {

void checkSimulatedMacs(Input input) {
    const std::string_view text = input.rest();
    requireRecord<SimulatedMac>(text);
    require(!JsonDocument::parse(text) || !nameGivenTwice(text));
    require(faultOf<SimulatedMac>(text).has_value() == !decodeRecord<SimulatedMac>(text));
}

const Target simulatedMacsTarget("SimulatedMacs", checkSimulatedMacs);

} // namespace

} // namespace velmo::Fuzz
