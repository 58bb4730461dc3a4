#include "tools/velmo-power/StatusText.h"

#include "core/power/HoldReasons.h"
#include "core/support/Text.h"
#include "core/terminal/AttachLabels.h"
#include "machine/PowerReadings.h"
#include "tools/velmo-power/Background.h"
#include "tools/velmo-power/HoldLimits.h"
#include "tools/velmo-power/PowerCommandLine.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

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

/// A newer daemon may have other reasons. Their text is not shown, because a terminal obeys what it
/// is sent.
std::string_view explained(std::string_view reason) {
    return fromRawText<HoldRefusal>(reason)
        .transform([](HoldRefusal refusal) { return explained(refusal); })
        .value_or("for a reason that this version does not know");
}

std::string percent(std::int64_t value) {
    return std::to_string(value) + "%";
}

std::string_view explained(HoldEnding ending) {
    switch (ending) {
    case HoldEnding::released:
        return "released";
    case HoldEnding::releasedByAnother:
        return "released by another client";
    case HoldEnding::clientGone:
        return "its client went away";
    case HoldEnding::heartbeat:
        return "its client was silent for too long";
    case HoldEnding::battery:
        return "the battery fell below the floor";
    case HoldEnding::thermal:
        return "the machine ran too hot";
    case HoldEnding::stopping:
        return "the power daemon was stopped";
    case HoldEnding::crashed:
        break;
    }
    return "the power daemon died, and its next start put sleep back";
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

} // namespace

std::string_view endingText(std::string_view how) {
    if (how == HoldKeeper::connectionLost)
        return "the power daemon went away";
    if (how == HoldKeeper::reasonUnknown)
        return "the power daemon ended the hold";
    return fromRawText<HoldEnding>(how)
        .transform([](HoldEnding ending) { return explained(ending); })
        .value_or("it ended in a way that this version does not know");
}

std::string holderText(const HolderReport& holder) {
    // A program may have any name, and a terminal obeys the control characters in it.
    std::string text = PtyAttach::sanitizeLabel(holder.program.value_or("a client"));
    if (holder.processId)
        text += " (" + std::to_string(*holder.processId) + ")";
    return text;
}

PowerStatus readStatus(PowerMachine& machine, bool mayRunPmset) {
    const PowerReading reading = readPower(machine);
    PowerStatus status;
    status.ac = reading.ac;
    status.battery = reading.battery;
    status.thermal = thermalName(machine.thermalState());
    status.lid = machine.lid().transform(
        [](const LidState& lid) { return lid.isShut ? LidPosition::shut : LidPosition::open; });
    status.sleepDisabled =
        mayRunPmset ? sleepDisabledNow(machine) : machine.sleepDisabledProperty();
    return status;
}

namespace {

std::string holderLine(const PowerStatus& status, WallTime now) {
    const HoldReport& report = *status.holds;
    if (!report.holder)
        return report.pending ? "nobody; sleep could not be enabled again yet, which is tried again"
                              : "nobody";
    const HolderReport& holder = *report.holder;
    std::string text = holderText(holder) + " since " + timeOfDayText({holder.since}, now)
                       + ", floor " + percent(holder.batteryFloor)
                       + (status.command ? ", for " + *status.command : "");
    if (report.sleepDisabled == false)
        text += "; but somebody has enabled sleep";
    return text;
}

} // namespace

std::string statusText(const PowerStatus& status, WallTime now, std::string_view simulatedMac) {
    std::string text;
    const auto line = [&](std::string_view name, std::string_view value) {
        text.append(name).append(value).append("\n");
    };
    if (!simulatedMac.empty())
        line("mac      ", simulatedText(simulatedMac));
    line("sleep    ", sleepWord(status.sleepDisabled));
    line("power    ", sourceWord(status.ac));
    line("battery  ", status.battery ? percent(*status.battery) : "none");
    line("thermal  ", status.thermal);
    line("lid      ", status.lid.transform(rawText<LidPosition>).value_or("none"));
    if (!status.holds) {
        line("held by  ", "unknown: " + std::string(status.whyUntold));
        return text;
    }
    line("held by  ", holderLine(status, now));
    if (const auto& last = status.holds->lastEnd)
        line("last     ", "the last hold ended at " + timeOfDayText({last->at}, now) + ": "
                              + std::string(endingText(last->how)));
    if (status.holds->recordIsUnreadable)
        line("record   ", "can't be read: sleep may still be disabled; velmo-power doctor says "
                          "what to do");
    return text;
}

std::string simulatedText(std::string_view folder) {
    return "simulated, in " + PtyAttach::sanitizeLabel(folder);
}

std::optional<std::string> commandText(std::span<const std::string> arguments) {
    if (arguments.empty())
        return std::nullopt;
    std::vector<std::string_view> words(arguments.begin() + 1, arguments.end());
    static_cast<void>(takeReadyOption(words));
    const auto line = CommandLine::read(powerCommandLine, words);
    if (!line || line->verb->name != PowerVerb::hold || line->words.empty())
        return std::nullopt;
    std::string text;
    for (const std::string& word : line->words)
        text.append(text.empty() ? "" : " ").append(word);
    std::ranges::replace(text, '\n', ' '); // a script
    text = PtyAttach::sanitizeLabel(text);
    if (Text::hasMoreCharactersThan(text, maxCommandText))
        text = std::string(Text::prefix(text, maxCommandText - 1)) + "…";
    return text;
}

bool isSameStatus(PowerStatus a, PowerStatus b) {
    for (PowerStatus* each : {&a, &b})
        if (each->holds && each->holds->holder)
            each->holds->holder->heartbeatAge = 0;
    return a == b;
}

std::string holdText(const HoldKeeper::Status& status) {
    switch (status.state) {
    case HoldKeeper::State::connecting:
        return status.reason.empty() ? "asking for the hold"
                                     : std::string(endingText(status.reason)) + "; asking again";
    case HoldKeeper::State::holding:
        return "holding: the Mac stays awake";
    case HoldKeeper::State::riding:
        return "the Mac is held awake already, by "
               + status.holder.transform(holderText).value_or("another client")
               + "; its hold is taken over when it ends";
    case HoldKeeper::State::refused:
        return "refused: " + std::string(explained(status.reason));
    case HoldKeeper::State::unreachable:
        if (status.reason == HoldKeeper::daemonSilent)
            return "the power daemon does not answer";
        if (status.reason == HoldKeeper::daemonFull)
            return "the power daemon has too many clients";
        return "the power daemon can't be reached";
    case HoldKeeper::State::released:
        return "the hold is over: released by another client";
    }
    std::unreachable();
}

std::string HeldLine::text(const PowerStatus& status) const {
    const std::string holder = riding.empty() ? "" : " by " + riding;
    std::string line = status.sleepDisabled == false ? "held" + holder + ", but sleep is enabled"
                                                     : "awake for " + clockText(seconds) + holder;
    if (!until.empty())
        line += ", " + until;
    line += " | ";
    if (status.ac != false || !status.battery)
        line += std::string(sourceWord(status.ac)) + (status.battery ? ", " : "");
    if (status.battery)
        line += "battery " + percent(*status.battery);
    line += " (floor " + percent(floor.percent()) + ") | " + status.thermal;
    return line;
}

} // namespace velmo
