#include "core/terminal/AttachWire.h"
#include "fuzz/Fuzz.h"

#include "lab/instruments/SessionWorld.h"

namespace velmo::Fuzz {

namespace {

/// Reads what peers send to a session host. Each turn is a byte that says who speaks and how much
/// follows; a peer is a stranger at one of the two doors, a window or a bridge. Whatever they say,
/// a window that behaves sees the whole output, and nobody is left once they have gone.
void checkSessionPeers(Input input) {
    SessionWorld world;
    const std::string id = world.startShell();
    const auto attach = [&] {
        const PeerId peer = world.connect(SessionHost::Door::attach);
        world.receive(peer, PtyAttach::hello(world.ticketFor(id).value().token, 80, 24).value());
        return peer;
    };
    const PeerId good = attach();
    const PeerId window = attach();
    const PeerId bridge = world.connect(SessionHost::Door::control);
    world.receive(bridge, R"({"call":"stream","session":"bash"})"
                          "\n");
    const std::array speakers{window, bridge, world.connect(SessionHost::Door::attach),
                              world.connect(SessionHost::Door::control)};
    while (!input.isEmpty()) {
        const std::uint8_t turn = input.byte();
        std::string said;
        for (int left = turn / 4; left > 0 && !input.isEmpty(); --left)
            said += static_cast<char>(input.byte());
        world.receive(speakers[turn % 4], said);
        world.settle();
    }
    const std::string output = "\xE2\x82\xAC\r\n";
    world.program().output += output;
    world.settle();
    const auto frames = PtyAttach::Decoder().feed(bytesOf(world.peers.at(good)->received));
    std::string seen;
    for (const auto& frame : *frames) {
        if (const auto* const bytes = std::get_if<Bytes>(&frame))
            seen += textOf(*bytes);
    }
    require(world.peers.at(good)->isClosed || seen == output);
    require(!world.peers.at(good)->isClosed);
    for (const auto& [number, program] : world.programs)
        program->isOver = true;
    for (std::uint64_t number = 1; number <= world.programs.size(); ++number)
        world.end(0, number);
    world.pass(2 * TerminalSession::memory);
    require(world.host.isIdle());
}

const Target sessionPeersTarget("SessionPeers", checkSessionPeers);

} // namespace

} // namespace velmo::Fuzz
