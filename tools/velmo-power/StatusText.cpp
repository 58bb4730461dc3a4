#include "tools/velmo-power/StatusText.h"

#include "core/power/HoldReasons.h"

#include "machine/PowerReadings.h"

#include <array>
#include <utility>

namespace velmo {

namespace {

std::string_view explained(HoldRefusal refusal) {
    switch (refusal) {
    case HoldRefusal::busy:
        return "another client holds";
    case HoldRefusal::battery:
        return "the battery is below the floor";
    case HoldRefusal::thermal:
        return "the machine is too hot";
    case HoldRefusal::unreadable:
        return "the sleep setting can't be read";
    case HoldRefusal::record:
        return "the daemon can't write its record";
    case HoldRefusal::pmset:
        return "pmset could not disable sleep";
    case HoldRefusal::gone:
        break;
    }
    return "the connection is gone";
}

/// A newer daemon may have reasons that this client does not know.
std::string_view explained(std::string_view reason) {
    return fromRawText<HoldRefusal>(reason)
        .transform([](HoldRefusal refusal) { return explained(refusal); })
        .value_or(reason);
}

std::string percent(std::int64_t value) {
    return std::to_string(value) + "%";
}

std::string_view sleepWord(const std::optional<bool>& disabled) {
    if (!disabled)
        return "unknown";
    return *disabled ? "disabled" : "enabled";
}

std::string_view sourceWord(const std::optional<bool>& ac) {
    if (!ac)
        return "unknown";
    return *ac ? "mains" : "battery";
}

std::string twoDigits(std::int64_t value) {
    return (value < 10 ? "0" : "") + std::to_string(value);
}

std::string clockText(double seconds) {
    const auto whole = static_cast<std::int64_t>(seconds);
    return std::to_string(whole / 3600) + ":" + twoDigits(whole / 60 % 60) + ":"
           + twoDigits(whole % 60);
}

} // namespace

PowerStatus readStatus(PowerMachine& machine) {
    const PowerReading reading = readPower(machine);
    PowerStatus status;
    status.ac = reading.ac;
    status.battery = reading.battery;
    status.thermal = thermalName(machine.thermalState());
    status.lid = machine.lid().transform(
        [](const LidState& lid) { return std::string(lid.isShut ? "shut" : "open"); });
    status.sleepDisabled = sleepDisabledNow(machine);
    return status;
}

std::string statusText(const PowerStatus& status) {
    std::string text;
    const auto line = [&](std::string_view name, std::string_view value) {
        text.append(name).append(value).append("\n");
    };
    line("sleep    ", sleepWord(status.sleepDisabled));
    line("power    ", sourceWord(status.ac));
    line("battery  ", status.battery ? percent(*status.battery) : "none");
    line("thermal  ", status.thermal);
    line("lid      ", status.lid.value_or("none"));
    return text;
}

std::string holdText(const HoldKeeper::Status& status) {
    switch (status.state) {
    case HoldKeeper::State::connecting:
        return status.reason.empty() ? "asking for the hold" : status.reason + "; asking again";
    case HoldKeeper::State::holding:
        return "holding: the Mac stays awake";
    case HoldKeeper::State::refused:
        return "refused: " + std::string(explained(status.reason));
    case HoldKeeper::State::unreachable:
        return "the power daemon can't be reached";
    }
    std::unreachable();
}

std::string heldLine(double heldSeconds, BatteryFloor floor, const PowerStatus& status) {
    std::string line = "awake for " + clockText(heldSeconds);
    line += " | power: ";
    line += sourceWord(status.ac);
    if (status.battery)
        line += ", battery " + percent(*status.battery);
    line += " (floor " + percent(floor.percent()) + ")";
    line += " | " + status.thermal;
    return line;
}

} // namespace velmo
