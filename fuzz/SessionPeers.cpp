#include "core/terminal/AttachWire.h"
#include "fuzz/Fuzz.h"
#include "lab/instruments/SessionWorld.h"

#include <utility>

namespace velmo::Fuzz {

namespace {

/// The input is what peers send to a session host, in turns: a byte, which gives the peer and the
/// number of bytes, and then those bytes. The peers are a window, a bridge and a stranger at each
/// of the two doors. What the window sends first stands behind its greeting. Whatever they send, a
/// window that behaves sees the whole output, and the host is idle some time after every program
/// has ended.
void checkSessionPeers(Input input) {
    SessionWorld world;
    const std::string id = world.startShell();
    const auto greeting = [&] {
        const std::string token = world.ticketFor(id).value().token;
        return std::string(textOf(PtyAttach::hello(token, 80, 24).value()));
    };
    const PeerId good = world.connect(SessionHost::Door::attach);
    world.receive(good, greeting());
    const PeerId window = world.connect(SessionHost::Door::attach);
    std::string early = greeting();
    const PeerId bridge = world.connect(SessionHost::Door::control);
    world.receive(bridge, R"({"call":"stream","session":"bash"})"
                          "\n");
    const std::array speakers{window, bridge, world.connect(SessionHost::Door::attach),
                              world.connect(SessionHost::Door::control)};
    while (!input.isEmpty()) {
        const std::uint8_t turn = input.byte();
        std::string said = speakers[turn % 4] == window ? std::exchange(early, {}) : std::string();
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
