#include "fuzz/Fuzz.h"
#include "platform/simulated/SimulatedMac.h"

void velmo::Fuzz::target(Input input) {
    requireRecord<SimulatedMac>(input.rest());
}
