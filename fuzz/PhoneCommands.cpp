#include "phone/PhoneCommands.h"

#include "fuzz/Fuzz.h"
#include "lab/instruments/PhoneWorld.h"

namespace velmo::Fuzz {

namespace {

/// The input is commands to the bridge, a line each. Every line gets one in reply, and a code that
/// was made on the way lets a device in.
void checkPhoneCommands(Input input) {
    PhoneWorld world;
    world.letIn();
    while (!input.isEmpty()) {
        const std::string_view line = input.line();
        const std::string reply = obey(world.bridge, line);
        require(reply.ends_with('\n') && reply.find('\n') == reply.size() - 1);
        const auto read = decodeRecord<PhoneCommandReply>(reply);
        require(read.has_value());
        require(read->ok || (!read->address && !read->devices));
        require(!read->ok || decodeRecordExactly<PhoneCommandLine>(line));
    }
    require(!world.letIn().empty());
}

const Target phoneCommandsTarget("PhoneCommands", checkPhoneCommands);

} // namespace

} // namespace velmo::Fuzz
