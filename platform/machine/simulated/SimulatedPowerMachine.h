#pragma once

#include "machine/PowerMachine.h"
#include "platform/simulated/MacFolder.h"

#include <functional>

namespace velmo {

/// A simulated Mac as the daemon and its clients see it. Every fact is read from the machine file
/// when it is asked for. While the file can't be read, as in the middle of a save, a fact that may
/// be absent is absent, and the heat and the clocks stay as they were read last.
class SimulatedPowerMachine final : public PowerMachine {
public:
    /// `beforeEffect` is called before anything is done to the Mac.
    explicit SimulatedPowerMachine(
        MacFolder folder, std::function<void()> beforeEffect = [] {})
        : folder_(std::move(folder)), beforeEffect_(std::move(beforeEffect)) {}

    std::optional<std::string> runPmset(PmsetArguments arguments) override;
    std::optional<bool> sleepDisabledProperty() override;
    std::optional<PowerSourceSnapshot> powerSources() override;
    ThermalState thermalState() override;
    std::optional<LidState> lid() override;
    bool requestSleep() override;
    WallTime wallTime() override;
    SteadyTime steadyTime() override;
    void pause(double seconds) override;

private:
    const SimulatedMac& mac();

    MacFolder folder_;
    std::function<void()> beforeEffect_;
    SimulatedMac lastGood_;
};

} // namespace velmo
