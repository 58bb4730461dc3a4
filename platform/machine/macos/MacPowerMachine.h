#pragma once

#include "machine/PowerMachine.h"

namespace velmo {

/// Where every Mac has the tool that changes the sleep setting.
inline constexpr const char* pmsetPath = "/usr/bin/pmset";

/// The Mac that this process runs on. The object is stateless; only `runPmset({"-a", ...})` needs
/// root.
class MacPowerMachine final : public PowerMachine {
public:
    std::optional<std::string> runPmset(PmsetArguments arguments) override;
    std::optional<bool> sleepDisabledProperty() override;
    std::optional<PowerSourceSnapshot> powerSources() override;
    ThermalState thermalState() override;
    std::optional<LidState> lid() override;
    bool requestSleep() override;
    WallTime wallTime() override;
    SteadyTime steadyTime() override;
    void pause(double seconds) override;
};

} // namespace velmo
