#include "tools/velmo-power/StatusText.h"

#include "core/power/PowerGuardPolicy.h"
#include "core/power/SleepSetting.h"

#include "machine/PowerReadings.h"

#include <array>
#include <utility>

namespace velmo {

namespace {

struct Explanation {
    std::string_view reason;
    std::string_view text;
};

constexpr auto refusals = std::to_array<Explanation>({
    {.reason = "busy", .text = "another client holds"},
    {.reason = "battery", .text = "the battery is below the floor"},
    {.reason = "thermal", .text = "the machine is too hot"},
    {.reason = "unreadable", .text = "the sleep setting can't be read"},
    {.reason = "record", .text = "the daemon can't write its record"},
    {.reason = "pmset", .text = "pmset could not disable sleep"},
    {.reason = "gone", .text = "the connection is gone"},
});

std::string_view explained(std::string_view reason) {
    for (const Explanation& refusal : refusals) {
        if (refusal.reason == reason)
            return refusal.text;
    }
    return reason;
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
    const PowerReading reading = power(machine);
    PowerStatus status;
    status.ac = reading.ac;
    status.battery = reading.battery;
    status.thermal = thermalName(machine.thermalRaw());
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

std::string heldLine(double heldSeconds, std::int64_t floor, const PowerStatus& status) {
    std::string line = "awake for " + clockText(heldSeconds);
    line += " | power: ";
    line += sourceWord(status.ac);
    if (status.battery)
        line += ", battery " + percent(*status.battery);
    line += " (floor " + percent(PowerGuardPolicy::clampFloor(floor)) + ")";
    line += " | " + status.thermal;
    return line;
}

} // namespace velmo
