#include "fuzz/Fuzz.h"
#include "platform/simulated/CallLine.h"

namespace velmo::Fuzz {

namespace {

/// The input is a line, which is read both as a call and as a reply.
void checkCallLines(Input input) {
    const std::string_view line = input.rest();
    requireRecord<ReplyLine>(line);
    requireSpellingIsIgnored(line, CallLine::parse);
    if (const auto call = CallLine::parse(line)) {
        require(call->call != PowerCall::hold || call->batteryFloor);
        require(CallLine::parse(encodeJson(*call).value()) == call);
    }
}

const Target callLinesTarget("CallLines", checkCallLines);

} // namespace

} // namespace velmo::Fuzz
