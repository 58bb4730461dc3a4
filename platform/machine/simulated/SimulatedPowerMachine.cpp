#include "platform/machine/simulated/SimulatedPowerMachine.h"

#include "platform/posix/ChildProcess.h"
#include "platform/posix/Clocks.h"

#include <chrono>
#include <thread>

namespace velmo {

std::optional<std::string> SimulatedPowerMachine::runPmset(PmsetArguments arguments) {
    beforeEffect_();
    return outputOf(folder_.pmset(), arguments);
}

std::optional<bool> SimulatedPowerMachine::sleepDisabledProperty() {
    auto now = folder_.load();
    if (!now || now->faults.propertyUnreadable)
        return std::nullopt;
    now->settle(Clocks::steadyTime());
    return now->sleepDisabled;
}

std::optional<PowerSourceSnapshot> SimulatedPowerMachine::powerSources() {
    const auto now = folder_.load();
    if (!now)
        return std::nullopt;
    PowerSourceSnapshot snapshot{.providingType = now->mains ? "AC Power" : "Battery Power",
                                 .sources = {}};
    if (now->battery) {
        snapshot.sources.push_back(
            {.type = "InternalBattery", .currentCapacity = *now->battery, .maximumCapacity = 100});
    }
    return snapshot;
}

ThermalState SimulatedPowerMachine::thermalState() {
    return mac().thermal;
}

std::optional<LidState> SimulatedPowerMachine::lid() {
    const auto now = folder_.load();
    if (!now || now->lid == Lid::none)
        return std::nullopt;
    return LidState{.isShut = now->lid == Lid::shut, .causesSleep = true};
}

bool SimulatedPowerMachine::requestSleep() {
    beforeEffect_();
    return folder_.update([](SimulatedMac& mac) { mac.asleep = true; });
}

WallTime SimulatedPowerMachine::wallTime() {
    const SimulatedMac& now = mac();
    return {Clocks::wallTime().sinceEpoch + now.elapsed + now.clockOffset};
}

SteadyTime SimulatedPowerMachine::steadyTime() {
    return {Clocks::steadyTime().seconds + mac().elapsed};
}

void SimulatedPowerMachine::pause(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

const SimulatedMac& SimulatedPowerMachine::mac() {
    if (auto loaded = folder_.load())
        lastGood_ = *std::move(loaded);
    return lastGood_;
}

} // namespace velmo
