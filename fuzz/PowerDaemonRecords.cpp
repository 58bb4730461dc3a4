#include "core/power/PowerDaemonRecord.h"
#include "fuzz/Fuzz.h"

void velmo::Fuzz::target(Input input) {
    requireRecord<PowerDaemonRecord>(input.rest());
}
