#include "core/apps/AppRecord.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

void checkAppRecords(Input input) {
    requireRecord<AppRecord>(input.rest());
}

const Target appRecordsTarget("AppRecords", checkAppRecords);

} // namespace

} // namespace velmo::Fuzz
