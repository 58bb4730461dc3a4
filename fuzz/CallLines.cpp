#include "fuzz/Fuzz.h"
#include "platform/simulated/CallLine.h"

namespace velmo {

/// A call and an answer, for whichever of them the line is.
void Fuzz::target(Input input) {
    const std::string_view line = input.rest();
    const auto decodeReply = [](std::string_view text) { return decodeRecord<ReplyLine>(text); };
    requireSpellingIsIgnored(line, CallLine::parse);
    requireSpellingIsIgnored(line, decodeReply);
    if (const auto call = CallLine::parse(line)) {
        require(call->call != PowerCall::hold || call->batteryFloor);
        require(CallLine::parse(encodeJson(*call).value()) == call);
    }
    if (const auto reply = decodeReply(line))
        require(decodeReply(encodeJson(*reply).value()) == reply);
}

} // namespace velmo
