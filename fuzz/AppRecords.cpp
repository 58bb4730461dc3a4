#include "core/apps/AppRecord.h"
#include "fuzz/Fuzz.h"

void velmo::Fuzz::target(Input input) {
    requireRecord<AppRecord>(input.rest());
}
