#pragma once

#include "platform/simulated/MacFolder.h"

#include "machine/PowerMachine.h"

namespace velmo {

/// A simulated Mac as the daemon and its clients see it. Every fact is read from the machine file
/// when it is asked for; while a person is in the middle of saving the file, the last good state
/// stands.
class SimulatedPowerMachine final : public PowerMachine {
public:
    explicit SimulatedPowerMachine(MacFolder folder) : folder_(std::move(folder)) {}

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
    SimulatedMac lastGood_;
};

} // namespace velmo
