/// Serves the input daemon's lines: key combinations on the user's own layout, keys of a game that
/// stay down in their places, and "release-all". The Mac is a stub with a French keyboard that
/// prints what it would post.

#include "core/input/EventFlags.h"
#include "core/input/HotkeyPlan.h"
#include "core/input/InputDaemonWire.h"

#include <iostream>
#include <map>

using namespace velmo;

namespace {

/// Returns what a key gives with shift, option, both or none; here a few keys of a French keyboard.
/// On a Mac UCKeyTranslate tells, with `state.carbonModifierState() | (command ? 1U : 0U)`: layouts
/// of other scripts give other characters with Command down. A French one gives the same.
std::optional<std::string> french(std::uint16_t code, LayoutState state, bool /*command*/) {
    static const std::map<std::uint16_t, std::vector<std::string>> keys{{6, {"w", "W"}},
                                                                        {12, {"a", "A"}},
                                                                        {0, {"q", "Q"}},
                                                                        {19, {"é", "2"}},
                                                                        {23, {"(", "5", "{", "["}}};
    const auto key = keys.find(code);
    const auto index = static_cast<std::size_t>(state.rawValue);
    if (key == keys.end() || index >= key->second.size())
        return std::nullopt;
    return key->second[index];
}

/// On a Mac: CGEventCreateKeyboardEvent, CGEventSetFlags, CGEventPost.
void post(const std::vector<KeyPhase::Step>& steps) {
    for (const KeyPhase::Step& step : steps)
        std::cout << "  key " << step.code << (step.down ? " down" : " up") << std::hex
                  << " flags 0x" << EventFlags::of(step) << std::dec << '\n';
}

/// Carries a request out; false if its arguments are refused.
bool serve(const std::vector<std::string>& argv, HeldKeys& held) {
    const std::map<std::string, KeyPhase::Phase> phases{
        {"hotkey", KeyPhase::tap}, {"key-down", KeyPhase::down}, {"key-up", KeyPhase::up}};
    if (const auto phase = phases.find(argv[0]); phase != phases.end()) {
        const auto hotkey = Hotkey::parseArguments(std::span(argv).subspan(1));
        if (hotkey)
            post(HotkeyPlan::steps(phase->second, *hotkey, french, held));
        return hotkey.has_value();
    }
    if (argv[0] == "release-all") {
        const auto keys = InputDaemonWire::releaseKeys(argv);
        if (keys)
            post(HotkeyPlan::releases(*keys, held));
        return keys.has_value();
    }
    return argv[0] == "ping" && argv.size() == 1;
}

} // namespace

int main() {
    const char* lines[] = {
        R"({"id":1,"argv":["hotkey","[\"cmd\",\"a\"]"]})",
        R"({"id":2,"argv":["hotkey","[\"cmd\",\"2\"]"]})",
        R"({"id":3,"argv":["key-down","[\"shift\",\"w\"]","game"]})",
        R"({"id":4,"argv":["release-all","[\"w\"]"]})",
        R"({"id":5,"argv":["hotkey","[\"a\"]"]})",
    };
    HeldKeys held; // of one phone, for as long as it is connected
    std::cout << InputDaemonWire::ready() << '\n';
    for (const char* line : lines) {
        const auto request = InputDaemonWire::parse(line);
        if (!request)
            continue; // it can't even be answered
        const bool served = request->argv && serve(*request->argv, held);
        std::cout << InputDaemonWire::response(request->id, served ? 0 : 1, "bad request") << '\n';
    }
    post(HotkeyPlan::releases({}, held)); // the phone is gone: nothing stays down
}
