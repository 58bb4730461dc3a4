#include "core/power/PowerDaemonRecord.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

void checkPowerDaemonRecords(Input input) {
    requireRecord<PowerDaemonRecord>(input.rest());
}

const Target powerDaemonRecordsTarget("PowerDaemonRecords", checkPowerDaemonRecords);

} // namespace

} // namespace velmo::Fuzz
