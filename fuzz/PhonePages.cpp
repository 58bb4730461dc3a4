#include "fuzz/Fuzz.h"
#include "lab/instruments/PhoneWorld.h"

namespace velmo::Fuzz {

namespace {

/// The input is what pages send to the bridge, in turns: a byte, which gives the page, the kind of
/// the message and whether the page reads from then on; the number of bytes; and then those bytes.
/// Whatever they send, a page that behaves sees the whole output, a device that may only view
/// changes nothing, and the bridge keeps a bounded number of bytes for each page.
void checkPhonePages(Input input) {
    PhoneWorld world;
    const std::string id = world.sessions.startShell();
    const auto watching = [&](DeviceRights rights) {
        const auto page = world.open(world.letIn(rights));
        world.say(page, R"({"call":"watch","session":")" + id + "\"}");
        return page;
    };
    const auto good = watching(DeviceRights::view);
    const auto sized = world.sessions.program().sizes;
    const std::array speakers{watching(DeviceRights::use), watching(DeviceRights::view)};
    bool mayUse = false;
    while (!input.isEmpty()) {
        const std::uint8_t turn = input.byte();
        const auto& speaker = speakers[turn % 2];
        mayUse = mayUse || turn % 2 == 0;
        speaker->reads = turn % 4 < 2;
        std::string said;
        for (int left = input.byte(); left > 0 && !input.isEmpty(); --left)
            said += static_cast<char>(input.byte());
        speaker->toSay.push_back({.isText = turn % 8 < 4, .content = std::move(said)});
        world.settle();
        require(speaker->closing || !speaker->reads || speaker->toSay.empty());
        require(speaker->frames.size() <= PhonePage::window);
    }
    const std::string output = "\xE2\x82\xAC\r\n";
    world.sessions.program().output += output;
    world.settle();
    require(!good->closing && good->output() == output);
    require(mayUse
            || (world.sessions.program().sizes == sized && world.sessions.program().typed.empty()
                && world.power.events.empty() && world.sessions.programs.size() == 1
                && world.sessions.program().endings.empty()));
}

const Target phonePagesTarget("PhonePages", checkPhonePages);

} // namespace

} // namespace velmo::Fuzz
