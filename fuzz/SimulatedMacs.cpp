#include "fuzz/Fuzz.h"
#include "platform/simulated/RecordFault.h"
#include "platform/simulated/SimulatedMac.h"

void velmo::Fuzz::target(Input input) {
    const std::string_view text = input.rest();
    requireRecord<SimulatedMac>(text);
    require(faultOf<SimulatedMac>(text).has_value() == !decodeRecord<SimulatedMac>(text));
}
